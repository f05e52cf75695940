#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "painter/BlurredCopies.h"
#include "painter/FilteredPictures.h"
#include "painter/GLPainter.h"
#include "painter/Painter.h"
#include "painter/StillPaints.h"
#include "platform/pixels/TilePainter.h"

namespace multiscene {

struct CanvasSize;

/// Gathers the draws of a picture and paints them with the processor when it ends, tile by tile. What only GL
/// can draw (templates' own programs, some looks where depths are compared or behind the eye) is drawn by GL
/// into a layer and painted in its place. Without such draws GL is never asked for.
class SoftwarePainter : public Painter {
  public:
    /// `threads` paint. The picture does not depend on their number.
    SoftwarePainter(GLPainter::MakeContext makeContext, platform::FileGate& gate, int threads);
    ~SoftwarePainter() override;

    std::string name() const override { return "software"; }
    /// What GL draws with, where it was needed.
    std::string device() const override { return gl_.device(); }
    void beginFrame(int width, int height, uint32_t background = 0) override;
    void endFrame(const platform::Canvas& picture) override;
    void beginTarget(QVFrameBufferToTexture& target) override;
    void endTarget() override;
    std::shared_ptr<Shader> shader(const std::string& path) override { return gl_.shader(path); }
    const ShaderManager& shaders() const override { return gl_.shaders(); }
    void makeCurrent() override;
    void release() override;

  protected:
    void paint(const QuadDraw& quad) override;
    void paint(const LettersDraw& letters) override;
    void paint(const MeshDraw& mesh) override;

  private:
    struct Piece;
    struct Picture;

    void paintColor(const QuadDraw& quad);
    void begin(const CanvasSize& size, uint32_t background, QVFrameBufferToTexture* target);
    void drop();
    Picture& current();
    void finish(Picture& picture, const platform::Canvas& canvas);
    void drawLayers(Picture& picture);
    void drawLayer(Picture& picture, size_t first, size_t end, bool isGround);

    GLPainter gl_;
    platform::TilePainter tiles_;
    BlurredCopies blurred_;
    FilteredPictures filtered_;
    StillPaints stills_;
    int64_t frame_ = 0;                               ///< painted so far
    std::vector<std::unique_ptr<Picture>> pictures_;  ///< the frame and the targets within it
    std::vector<std::unique_ptr<Picture>> spare_;     ///< kept for their memory
};

}  // namespace multiscene
