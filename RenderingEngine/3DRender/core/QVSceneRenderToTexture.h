#pragma once

#include <cstdint>

#include "core/GLESUtils/GLObject.h"

namespace multiscene {

class QVScene3D;

/// Draws a whole scene into a texture, for transitions. Owned by its scene; render queue only.
class QVSceneRenderToTexture {
  public:
    /// Takes the size from the scene's driver: its own size, or, for a driver wider than its limit for scene
    /// textures, that limit and the height in proportion. Makes no GL objects.
    explicit QVSceneRenderToTexture(QVScene3D& renderScene);

    /// Makes framebuffer and texture once.
    void setupRTT();
    /// Draws the scene, cleared to transparent first. Leaves the target bound as framebuffer.
    void renderSceneToTexture();
    /// Does nothing: the texture keeps its picture until the next frame is drawn.
    void clear() {}
    void destroyRTT();

    int32_t fboWidth() const { return fboWidth_; }
    int32_t fboHeight() const { return fboHeight_; }
    /// The texture to sample; made now if it is not there yet, so that materials may ask before the first
    /// frame.
    uint32_t CVTextureId();

  private:
    void computeFboSizeWithSceneWidth(int32_t width, int32_t height, int32_t maxWidth);

    QVScene3D& renderScene_;
    int32_t fboWidth_ = 0, fboHeight_ = 0;
    GLFramebuffer frameBuffer_;
    GLTexture fboTexture_;
};

}  // namespace multiscene
