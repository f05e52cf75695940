#include "core/Material/QVTexture2dMaterial.h"

#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "core/SkippedMedia.h"
#include "dataMode/QVMultiScene2DTextDataModel.h"
#include "dataMode/TextSettings.h"
#include "playback/Playback.h"

namespace multiscene {

static const MaterialTypes::Registration registered(
    "text2d",
    [](const platform::Value& textureInfo, const MaterialContext&) -> std::shared_ptr<QVMaterialBase> {
        return std::make_shared<QVTexture2dMaterial>(textureInfo);
    },
    text2DKeys);

QVTexture2dMaterial::QVTexture2dMaterial(platform::Value textInfo)
    : QVTextureMaterial(MaterialType::Text), textInfo_(std::move(textInfo)) {}

void QVTexture2dMaterial::loadMaterial() {
    auto model = QVMultiScene2DTextDataModel::multiScene2DTextDataModelWithDic(textInfo_);
    const auto scene = object3D() ? object3D()->scene() : nullptr;
    if (!scene) return;
    model.setScene(scene->sceneIdentifier(), scene->sceneConfigData().sceneResourceFolderPath,
                   scene->playback());
    if (!model.missingLetters().empty())
        reportSkipped(*object3D(), "letters that cannot be drawn", letterNames(model.missingLetters()));
    setTextureCoordinates(modelTexture_.loadTextureFrom2DTextDadaModel(model, scene->playback().textCopy()));
    setTexture(modelTexture_.texture());
}

void QVTexture2dMaterial::destroyMaterial() {
    modelTexture_ = {};
    setTexture(nullptr);
}

}  // namespace multiscene
