#include "core/Material/QVTextureSerialMaterial.h"

#include "core/Material/TextureInfoKeys.h"
#include "core/QVScene3D.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key textureSerialKeyList[] = {
    {.name = "imageType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "0 picture files, 2 PVR files",
     .minimum = 0,
     .maximum = 2},
};
constexpr KeyTable textureSerialKeys{"textureSerial", "Numbered pictures, one after another.",
                                     &pictureSequenceKeys, textureSerialKeyList};

static const MaterialTypes::Registration registered(
    "textureSerial",
    [](const platform::Value& textureInfo,
       const MaterialContext& context) -> std::shared_ptr<QVMaterialBase> {
        return std::make_shared<QVTextureSerialMaterial>(textureInfo, context.textureSerialStartFps,
                                                         context.textureSerialEndFps, context.scene);
    },
    textureSerialKeys);

namespace {

ImageType imageTypeOf(const platform::Value& textureInfo) {
    return static_cast<ImageType>(KeyReader(textureSerialKeys, textureInfo).int32("imageType"));
}

}  // namespace

QVTextureSerialMaterial::QVTextureSerialMaterial(platform::Value textureInfo, int64_t startFps,
                                                 int64_t endFps, const std::shared_ptr<QVScene3D>& scene)
    : QVTextureMaterial(MaterialType::TextureSerial),
      textureInfo_(std::move(textureInfo)),
      imageType_(imageTypeOf(textureInfo_)),
      sequence_(textureInfo_),
      animationStartFps_(startFps),
      animationEndFps_(endFps),
      currentscene_(scene) {}

void QVTextureSerialMaterial::updateMaterial(int64_t frame) {
    const auto name = sequence_.animationWithCurrentFps(frame, animationStartFps_, animationEndFps_);
    const auto scene = currentscene_.lock();
    if (!name || !scene) return;
    Playback& playback = scene->playback();
    const std::string path = playback.settings().multiSceneRenderPathResourcesWithString(
        *name, scene->sceneConfigData().sceneResourceFolderPath);
    if (path != shownPath_ && playback.gate().exists(path)) show(path, playback.gate());
    if (!hasTexture()) reportSkippedPicture(path.empty() ? *name : path, textureInfo_);
}

void QVTextureSerialMaterial::show(const std::string& path, platform::FileGate& gate) {
    ZBTexture picture;
    picture.loadPicture(path, imageType_, gate, largestShownBox());
    modelTexture_ = std::move(picture);
    setTexture(modelTexture_.texture());
    shownPath_ = path;
}

void QVTextureSerialMaterial::destroyMaterial() {
    modelTexture_ = {};
    setTexture(nullptr);
    shownPath_.clear();
}

}  // namespace multiscene
