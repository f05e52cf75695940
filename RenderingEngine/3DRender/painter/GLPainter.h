#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "core/GLESUtils/MultisampleTarget.h"
#include "core/GLESUtils/TextureUpload.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "painter/GLFilters.h"
#include "painter/Painter.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

/// Draws with GL at once, frames with several samples a pixel, targets with one.
class GLPainter : public Painter {
  public:
    /// Who keeps pictures in memory once GL has them.
    enum class PictureMemory { Dropped, Kept };
    using MakeContext = std::function<std::shared_ptr<platform::GLContext>()>;

    /// The context is made when it is first needed. The gate, through which templates' shaders are opened,
    /// outlives the painter.
    GLPainter(MakeContext makeContext, platform::FileGate& gate,
              PictureMemory memory = PictureMemory::Dropped);
    ~GLPainter() override;

    std::string name() const override { return "gl"; }
    std::string device() const override;
    void beginFrame(int width, int height, uint32_t background = 0) override;
    void endFrame(const platform::Canvas& picture) override;
    void beginTarget(QVFrameBufferToTexture& target) override;
    void endTarget() override;
    std::shared_ptr<Shader> shader(const std::string& path) override;
    const ShaderManager& shaders() const override { return shaders_; }
    void makeCurrent() override;
    void release() override;

    /// In pixels from the lower left corner of the frame.
    struct Region {
        int left = 0, bottom = 0, width = 0, height = 0;
    };
    /// As beginFrame(), but only this part is drawn, and endFrame() gives this part alone.
    void beginPart(int width, int height, const Region& part, uint32_t background);
    /// Draws what another painter has gathered, in the state that it carries.
    void replay(const QuadDraw& quad) { paint(quad); }
    void replay(const LettersDraw& letters) { paint(letters); }
    void replay(const MeshDraw& mesh) { paint(mesh); }

  protected:
    void paint(const QuadDraw& quad) override;
    void paint(const LettersDraw& letters) override;
    void paint(const MeshDraw& mesh) override;

  private:
    struct Target {
        unsigned int framebuffer = 0;
        int width = 0, height = 0;
        Region part;
        bool hasDepth = false;
        std::shared_ptr<GLRenderbuffer> addedDepth = {};  ///< for draws that cannot do without
    };

    void createBuffers(int width, int height);
    void destroyBuffers();
    void bind(const Target& target);
    void bindAgain();
    Texture& filtered(const QuadDraw& quad);
    void clear(uint32_t background, bool withDepth);
    void apply(const DrawState& state);
    void addDepth();
    void use(Shader& shader);
    Shader& named(const std::string& name);
    Shader& blurShader();
    void bindTexture(Shader& shader, const char* sampler, int unit, Texture* texture,
                     TextureWrap wrap = TextureWrap::ClampToEdge);

    // Each makes its program current and sets what it takes besides texture and matrices.
    Shader& prepare(const PlainLook& look, const QuadDraw& quad);
    Shader& prepare(const MaskLook& look, const QuadDraw& quad);
    Shader& prepare(const GradientLook& look, const QuadDraw& quad);
    Shader& prepare(const FilterLook& look, const QuadDraw& quad);
    Shader& prepare(const KeyLook& look, const QuadDraw& quad);
    Shader& prepare(const BlurLook& look, const QuadDraw& quad);
    Shader& prepare(const ColorLook& look, const QuadDraw& quad);
    Shader& prepare(const ShaderLook& look, const QuadDraw& quad);
    void drawSide(Shader& shader, const MeshDraw& mesh, bool isOutside);

    MakeContext makeContext_;
    PictureMemory memory_;
    std::shared_ptr<platform::GLContext> context_;
    ShaderManager shaders_;
    GLFilters filters_;
    MultisampleTarget samples_;
    GLFramebuffer resolved_;
    GLRenderbuffer resolvedColor_;
    std::vector<Target> targets_;  ///< the one drawn into last
};

}  // namespace multiscene
