// A framebuffer with a colour texture of a fixed size, bound as the draw target and unbound again.
#pragma once

#include <array>

#include "core/GLESUtils/GLObject.h"
#include "core/GLESUtils/TextureTarget.h"

namespace multiscene {

/// Owned by the exporter and by drawables that render to a texture. Render thread; the shared context is made
/// current before GL objects are made or deleted.
class QVFrameBufferToTexture {
  public:
    /// Size in pixels, truncated towards zero. Makes no GL objects.
    QVFrameBufferToTexture(double width, double height, TargetShaders shaders = TargetShaders::Any);
    ~QVFrameBufferToTexture() { destroyFramebuffer(); }
    QVFrameBufferToTexture(const QVFrameBufferToTexture&) = delete;
    QVFrameBufferToTexture& operator=(const QVFrameBufferToTexture&) = delete;

    /// Makes framebuffer and texture once; the texture starts transparent.
    void createFrameBufferObject();
    /// Remembers framebuffer binding and viewport, binds this target and clears its colour to transparent.
    void bindRenderToTextureFramebuffer();
    /// Brings the remembered binding and viewport back.
    void unBindRenderToTextureFramebuffer();
    /// May run twice, and on a target that was never created.
    void destroyFramebuffer();

    int fboWidth() const { return fboWidth_; }
    int fboHeight() const { return fboHeight_; }
    unsigned int frameBuffer() const { return frameBuffer_.name(); }
    unsigned int fboTexture() const { return fboTexture_.name(); }
    /// The texture to sample what was drawn: fboTexture().
    unsigned int CVTextureId() const { return fboTexture_.name(); }
    unsigned int oldRenderFBO() const { return oldRenderFBO_; }
    /// x, y, width, height as saved by the last bind.
    const std::array<int, 4>& t_viewport() const { return t_viewport_; }

  private:
    int fboWidth_, fboHeight_;
    TargetShaders shaders_;
    GLFramebuffer frameBuffer_;
    GLTexture fboTexture_;
    unsigned int oldRenderFBO_ = 0;
    std::array<int, 4> t_viewport_{};
};

}  // namespace multiscene
