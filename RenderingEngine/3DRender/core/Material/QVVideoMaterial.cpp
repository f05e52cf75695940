#include "core/Material/QVVideoMaterial.h"

#include <algorithm>

#include "core/Material/TextureInfoKeys.h"
#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "core/SkippedMedia.h"
#include "playback/Playback.h"
#include "playback/RenderDriver.h"

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
    {.name = "audioVolume",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "volume of the film's own sound, 1 as recorded; 0: silent",
     .lookup = KeyLookup::UserMap,
     .minimum = 0,
     .maximum = 1},
};
constexpr KeyTable videoTextureKeys{"mp4Video", "A film, one picture a frame; it holds the last one.",
                                    nullptr, videoTextureKeyList};

namespace {

platform::VideoReaderSettings settingsOf(const UserFilm& film) {
    return {.framesPerSecond = film.framesPerSecond,
            .firstFrame = film.firstFrame,
            .shape = {film.aspectWidth, film.aspectHeight}};
}

/// The last frame of a node, or of its scene's clock where that ends first.
int64_t lastFrameOf(const QVObject3DFpsBase& node) {
    const auto scene = node.scene();
    return scene ? std::min(node.endFps(), scene->lastFrame()) : node.endFps();
}

}  // namespace

static const MaterialTypes::Registration registered(
    "mp4Video",
    [](const platform::Value& textureInfo,
       const MaterialContext& context) -> std::shared_ptr<QVMaterialBase> {
        if (!context.scene) return nullptr;
        Playback& playback = context.scene->playback();
        const auto film =
            UserFilm::of(textureNameOf(textureInfo), context.scene->sceneIdentifier(), playback.settings());
        return std::make_shared<QVVideoMaterial>(context.textureObjectPath,
                                                 KeyReader(videoTextureKeys, textureInfo).int32("videoFps"),
                                                 textureInfo, film, playback.gate());
    },
    videoTextureKeys);

QVVideoMaterial::QVVideoMaterial(std::string videoPath, int32_t videoFps, platform::Value textureInfo,
                                 UserFilm userFilm, platform::FileGate& gate)
    : QVTextureMaterial(MaterialType::Video),
      videoPath_(std::move(videoPath)),
      videoFps_(videoFps),
      textureInfo_(std::move(textureInfo)),
      userFilm_(std::move(userFilm)),
      gate_(gate) {}

void QVVideoMaterial::loadMaterial() {
    videoReader_.emplace(videoPath_, videoFps_, gate_, settingsOf(userFilm_));
    videoReader_->startProcessing();
    if (videoReader_->isReadable())
        startSound();
    else
        reportSkippedPicture(videoPath_, textureInfo_);
}

float QVVideoMaterial::volume() const {
    if (userFilm_.volume) return *userFilm_.volume;
    const auto scene = object3D()->scene();
    return object3D()
        ->settings()
        .valueOrUsers(KeyReader(videoTextureKeys, textureInfo_).value("audioVolume"),
                      scene ? scene->sceneIdentifier() : std::string())
        .floatValue();
}

void QVVideoMaterial::startSound() const {
    const auto scene = object3D() ? object3D()->scene() : nullptr;
    if (!scene || !videoReader_->hasSound() || volume() <= 0) return;
    const int64_t last = lastFrameOf(*object3D());
    const double start =
        userFilm_.firstFrame > 0 ? static_cast<double>(userFilm_.firstFrame) / userFilm_.framesPerSecond : 0;
    scene->renderManager().startSoundEffect(platform::Value::Dictionary{
        {"type", "audio"},
        {"audioPath", videoPath_},
        {"audioName", object3D()->name() + scene->sceneIdentifier()},
        {"volume", static_cast<double>(std::min(volume(), 1.0f))},
        {"isLoop", false},
        {"endsWithWindow", true},
        {"startSeconds", start},
        {"fpsStart", object3D()->sartFps()},
        {"fpsEnd", last == std::numeric_limits<int64_t>::max() ? last : last + 1},
    });
}

void QVVideoMaterial::updateMaterial(int64_t) {
    if (!videoReader_) return;
    frameOutput_ = videoReader_->renderNextFrame();
    if (!frameOutput_) {
        if (object3D() && !videoReader_->damage().empty())
            reportUsedOtherwise(*object3D(), videoReader_->damage(), videoPath_);
        return;
    }
    setTexture(frameOutput_->outputTexture);
}

void QVVideoMaterial::destroyMaterial() {
    frameOutput_.reset();
    if (videoReader_) {
        videoReader_->cancelProcessing();
        videoReader_->destroyFrameBuffer();
    }
    setTexture(nullptr);
}

TextureSize QVVideoMaterial::textureSize() const {
    if (!videoReader_) return {};
    return {videoReader_->videoWidth(), videoReader_->videoHeight()};
}

}  // namespace multiscene
