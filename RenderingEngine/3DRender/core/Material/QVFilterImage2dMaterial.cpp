#include "core/Material/QVFilterImage2dMaterial.h"

#include "core/Material/PhotoFilterKeys.h"
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

void QVFilterImage2dMaterial::loadMaterial() {
    if (Playback* const played = playback())
        modelTexture_.loadTextureFilter(imagePath_, rootScenePath_, filterInfo_, *played, largestShownBox());
    setTexture(modelTexture_.texture());
    if (!hasTexture()) reportSkippedPicture(imagePath_, filterInfo_);
}

void QVFilterImage2dMaterial::destroyMaterial() {
    modelTexture_ = {};
    setTexture(nullptr);
}

}  // namespace multiscene
