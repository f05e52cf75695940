// What nodes draw with. A node says what it draws; how (edges, uploads, programs, order of work, GL or not)
// is the painter's business.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/GLESUtils/QVFrameBufferToTexture.h"
#include "painter/Draw.h"

namespace multiscene {

class ShaderManager;

/// One a video. Render queue only. Draws may refer to textures and corners until the picture that they belong
/// to has ended: the frame's, or the target's.
class Painter {
  public:
    virtual ~Painter() = default;

    /// "gl" or "software", and what draws, for people: "software", "llvmpipe (LLVM 15, 256 bits)".
    virtual std::string name() const = 0;
    virtual std::string device() const = 0;

    // --- one picture
    /// `background`: 0xAARRGGBB, colours multiplied by alpha.
    virtual void beginFrame(int width, int height, uint32_t background = 0) = 0;
    /// Completes the picture in the caller's memory, of the frame's size; its colours are multiplied by
    /// alpha.
    virtual void endFrame(const platform::Canvas& picture) = 0;
    /// Until endTarget(), draws go into the target, which starts transparent. Within a frame or outside of
    /// one; targets nest.
    virtual void beginTarget(QVFrameBufferToTexture& target) = 0;
    virtual void endTarget() = 0;

    // --- what is drawn next
    void setBlendFunction(const BlendFunction& blend) { state_.blend = blend; }
    void setDepthTest(bool isOn) { state_.depthTest = isOn; }
    /// The default blend function, no depth test.
    void resetState() { state_ = {}; }

    /// Draws nothing without a picture to draw, and nothing outside of a frame and of targets: of a frame
    /// that is left out only its targets are drawn. Opacities end at 0 and 1, as do colours that no light
    /// falls on.
    void draw(QuadDraw quad);
    void draw(LettersDraw letters);
    void draw(MeshDraw mesh);

    // --- programs and GL objects
    /// A program by its description: the absolute path of a template's own, or the name of one of this
    /// program's, with its extension. Never none; one that cannot be built draws nothing and says why.
    virtual std::shared_ptr<Shader> shader(const std::string& path) = 0;
    /// What went wrong with the program's own shaders and with templates' is among its failures.
    virtual const ShaderManager& shaders() const = 0;
    /// To be called on the render queue before GL objects of textures and targets are deleted, and at the
    /// start of a run; may throw Error(Failed) when there is no GL.
    virtual void makeCurrent() = 0;
    /// Gives up what is kept between frames; textures are gone by then.
    virtual void release() = 0;

  protected:
    virtual void paint(const QuadDraw& quad) = 0;
    virtual void paint(const LettersDraw& letters) = 0;
    virtual void paint(const MeshDraw& mesh) = 0;

  private:
    DrawState state_;
};

}  // namespace multiscene
