// A picture of a fixed size that is drawn into and then sampled.
#pragma once

#include <cstdint>
#include <vector>

#include "core/GLESUtils/GLObject.h"
#include "core/GLESUtils/Texture.h"
#include "platform/pixels/Surface.h"

namespace multiscene {

/// Owned by drawables and scenes that render to a texture; painters bind it. Render queue. What it needs to
/// be drawn in is made at the first drawing: a framebuffer, with the GL context current, or memory.
class QVFrameBufferToTexture {
  public:
    /// Size in pixels, truncated towards zero.
    QVFrameBufferToTexture(double width, double height);
    QVFrameBufferToTexture(const QVFrameBufferToTexture&) = delete;
    QVFrameBufferToTexture& operator=(const QVFrameBufferToTexture&) = delete;

    int fboWidth() const { return fboWidth_; }
    int fboHeight() const { return fboHeight_; }
    /// What was drawn, the bottom row first; transparent before the first drawing.
    const std::shared_ptr<Texture>& texture() const { return texture_; }

    /// The framebuffer to draw into with GL.
    unsigned int frameBuffer();
    /// The memory to paint in, seen from above: other memory than the last time where somebody keeps that.
    platform::Canvas canvas();
    /// It has been painted: the texture shows it from now on.
    void setPainted();
    void destroyFramebuffer();

  private:
    int fboWidth_, fboHeight_;
    std::shared_ptr<Texture> texture_ = std::make_shared<Texture>();
    GLFramebuffer frameBuffer_;
    std::shared_ptr<std::vector<uint8_t>> memory_;
};

}  // namespace multiscene
