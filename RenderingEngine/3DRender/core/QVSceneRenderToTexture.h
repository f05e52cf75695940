#pragma once

#include <cstdint>

#include "core/GLESUtils/QVFrameBufferToTexture.h"

namespace multiscene {

class QVScene3D;

/// Draws a whole scene into a texture, for transitions. Owned by its scene; render queue only.
class QVSceneRenderToTexture {
  public:
    /// Takes the size from the scene's driver: its own size, or, for a driver wider than its limit for scene
    /// textures, that limit and the height in proportion. Makes no GL objects.
    explicit QVSceneRenderToTexture(QVScene3D& renderScene);

    /// Makes framebuffer and texture once.
    void setupRTT() { target_.createFrameBufferObject(); }
    /// Draws the scene, cleared to transparent first. Leaves the target bound as framebuffer.
    void renderSceneToTexture();
    /// Does nothing: the texture keeps its picture until the next frame is drawn.
    void clear() {}
    /// May run twice.
    void destroyRTT() { target_.destroyFramebuffer(); }

    int32_t fboWidth() const { return target_.fboWidth(); }
    int32_t fboHeight() const { return target_.fboHeight(); }
    uint32_t frameBuffer() const { return target_.frameBuffer(); }
    /// The texture to sample; made now if it is not there yet, so that materials may ask before the first
    /// frame.
    uint32_t CVTextureId();

  private:
    struct Size {
        double width, height;  // pixels, truncated when the target is made
    };
    static Size computeFboSizeWithSceneWidth(double width, double height, double maxWidth);
    QVSceneRenderToTexture(QVScene3D& renderScene, Size size);

    QVScene3D& renderScene_;
    QVFrameBufferToTexture target_;
};

}  // namespace multiscene
