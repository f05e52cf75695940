#include "core/QVSceneRenderToTexture.h"

#include "core/QVScene3D.h"
#include "painter/Painter.h"

namespace multiscene {

QVSceneRenderToTexture::QVSceneRenderToTexture(QVScene3D& renderScene)
    : QVSceneRenderToTexture(
          renderScene, computeFboSizeWithSceneWidth(renderScene.renderManager().bufferWidth(),
                                                    renderScene.renderManager().bufferHeight(),
                                                    renderScene.renderManager().sceneTextureMaxWidth())) {}

QVSceneRenderToTexture::QVSceneRenderToTexture(QVScene3D& renderScene, Size size)
    : renderScene_(renderScene), target_(size.width, size.height) {}

/// The limit looks at the width only: a tall picture keeps its full height.
QVSceneRenderToTexture::Size QVSceneRenderToTexture::computeFboSizeWithSceneWidth(double width, double height,
                                                                                  double maxWidth) {
    if (width <= maxWidth) return {width, height};
    return {maxWidth, height * maxWidth / width};
}

void QVSceneRenderToTexture::renderSceneToTexture(Painter& painter) {
    painter.beginTarget(target_);
    painter.resetState();
    renderScene_.render(painter);
    painter.endTarget();
}

}  // namespace multiscene
