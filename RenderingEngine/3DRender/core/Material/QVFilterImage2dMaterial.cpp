#include "core/Material/QVFilterImage2dMaterial.h"

#include "core/Material/PhotoFilterKeys.h"
#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "playback/Playback.h"

namespace multiscene {

static const MaterialTypes::Registration registered(
    "filterImage",
    [](const platform::Value& textureInfo,
       const MaterialContext& context) -> std::shared_ptr<QVMaterialBase> {
        return std::make_shared<QVFilterImage2dMaterial>(
            context.textureObjectPath,
            context.scene ? context.scene->sceneConfigData().sceneResourceFolderPath : std::string(),
            textureInfo);
    },
    filterImageKeys);

QVFilterImage2dMaterial::QVFilterImage2dMaterial(std::string imagePath, std::string rootScenePath,
                                                 platform::Value filterInfo)
    : QVTextureMaterial(MaterialType::Image),
      imagePath_(std::move(imagePath)),
      rootScenePath_(std::move(rootScenePath)),
      filterInfo_(std::move(filterInfo)) {}

PicturesAhead::Make QVFilterImage2dMaterial::making(Playback& playback) const {
    return [path = imagePath_, root = rootScenePath_, info = filterInfo_, &settings = playback.settings(),
            shown = largestShownBox()](platform::FileGate& gate) {
        return ZBTexture::filteredPicture(path, root, info, settings, gate, shown);
    };
}

void QVFilterImage2dMaterial::expectPicture() {
    Playback* const played = playback();
    if (!played || imagePath_.empty()) return;
    played->picturesAhead().expect(object3D()->scene(), pictureName(imagePath_), making(*played));
}

void QVFilterImage2dMaterial::loadMaterial() {
    if (Playback* const played = playback())
        modelTexture_.show(played->picturesAhead().take(pictureName(imagePath_), making(*played)));
    setTexture(modelTexture_.texture());
    if (!hasTexture()) reportSkippedPicture(imagePath_, filterInfo_);
}

void QVFilterImage2dMaterial::destroyMaterial() {
    modelTexture_ = {};
    setTexture(nullptr);
}

}  // namespace multiscene
