#include "core/Material/QVVideoMaterial.h"

#include "core/Material/TextureInfoKeys.h"

namespace multiscene {

static constexpr Key videoTextureKeyList[] = {
    textureFileKey(KeyFile::Video, "the film"),
    {.name = "videoFps",
     .type = KeyType::Integer,
     .unit = "frames a second",
     .fallback = "0",
     .meaning = "the film's frame rate",
     .minimum = 1,
     .maximum = 240},
};
constexpr KeyTable videoTextureKeys{"mp4Video", "A film, one picture a frame; it holds the last one.",
                                    nullptr, videoTextureKeyList};

static const MaterialTypes::Registration registered(
    "mp4Video",
    [](const platform::Value& textureInfo,
       const MaterialContext& context) -> std::shared_ptr<QVMaterialBase> {
        return std::make_shared<QVVideoMaterial>(context.textureObjectPath,
                                                 KeyReader(videoTextureKeys, textureInfo).int32("videoFps"),
                                                 textureInfo);
    },
    videoTextureKeys);

QVVideoMaterial::QVVideoMaterial(std::string videoPath, int32_t videoFps, platform::Value textureInfo)
    : QVTextureMaterial(MaterialType::Video, false),
      textureInfo_(std::move(textureInfo)),
      videoReader_(std::move(videoPath), videoFps) {
    videoReader_.startProcessing();
}

void QVVideoMaterial::loadMaterial() {
    if (!videoReader_.isReadable()) reportSkippedPicture(videoReader_.url(), textureInfo_);
}

void QVVideoMaterial::updateMaterial(const platform::CMTime&) {
    frameOutput_ = videoReader_.renderNextFrame();
    if (frameOutput_) setTextureId(frameOutput_->outputTexture);
}

void QVVideoMaterial::finishMaterial(const platform::CMTime&) {
    if (frameOutput_) videoReader_.cleanupResource(*frameOutput_);
}

void QVVideoMaterial::destroyMaterial() {
    frameOutput_.reset();
    videoReader_.cancelProcessing();
    videoReader_.destroyFrameBuffer();
    setTextureId(0);
}

TextureSize QVVideoMaterial::textureSize() const {
    return {videoReader_.videoWidth(), videoReader_.videoHeight()};
}

}  // namespace multiscene
