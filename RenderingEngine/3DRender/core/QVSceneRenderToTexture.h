#pragma once

#include "core/GLESUtils/QVFrameBufferToTexture.h"

namespace multiscene {

class Painter;
class QVScene3D;

/// Draws a whole scene into a texture, for transitions. Owned by its scene; render queue only.
class QVSceneRenderToTexture {
  public:
    /// Takes the size from the scene's driver: its own size, or, for a driver wider than its limit for scene
    /// textures, that limit and the height in proportion.
    explicit QVSceneRenderToTexture(QVScene3D& renderScene);

    /// Draws the scene over nothing. The texture keeps the picture until the next one.
    void renderSceneToTexture(Painter& painter);

    int32_t fboWidth() const { return target_.fboWidth(); }
    int32_t fboHeight() const { return target_.fboHeight(); }
    /// What to sample; nothing to draw before the first picture.
    const std::shared_ptr<Texture>& texture() const { return target_.texture(); }

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
