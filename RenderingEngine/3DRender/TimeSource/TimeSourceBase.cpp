#include "TimeSource/TimeSourceBase.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "core/QVScene3D.h"
#include "core/SkippedMedia.h"
#include "platform/base/Saturating.h"
#include "playback/Playback.h"
#include "videoDecode/QVVideoReader.h"

namespace multiscene {

namespace {

int32_t renderTypeOfTransition(int64_t sceneTansitionsType) {
    return sceneTansitionsType == 0 || sceneTansitionsType == 1
               ? static_cast<int32_t>(sceneTansitionsType + 1)
               : 0;
}

}  // namespace

TimeSourceBase::TimeSourceBase(const TimeSourceContext& context)
    : context_(context), rootScene_(context.scene) {
    context_.scene.reset();
    sceneTansitionsInit();
}

void TimeSourceBase::sceneTansitionsInit() {
    const platform::Value& info = context_.sceneTansitionsInfo;
    if (!info) return;
    tansitionsSceneId_ = info.integer("tansitionsSceneId");
    if (tansitionsSceneId_ >= 1)
        tansitionsType_ = renderTypeOfTransition(info.integer("sceneTansitionsType"));
    tansitionsFpsTotal_ = info.integer("fpsTotal");
}

void TimeSourceBase::setDecode(std::shared_ptr<QVVideoDecodeBase> decode) {
    decode_ = std::move(decode);
    decode_->setRenderManager(context_.renderManager);
    decode_->setCurrentScene(rootScene());
    decode_->setIsPlayAtActualSpeed(context_.isPlayAtActualSpeed);
    decode_->onVideoDecodeStart = whileAlive([this] {
        if (const auto delegate = delegate_.lock()) delegate->didStartRender(*this, rootScene());
    });
    decode_->onVideoDecodeFinish = whileAlive([this] {
        dropPictures();
        hasEndedAsCurrent_ = isRootSceneCurrent();
        if (const auto delegate = delegate_.lock()) delegate->didCompleteRender(*this, rootScene());
    });
}

void TimeSourceBase::computeTimeSourceFpsTotal() {
    using Frames = std::numeric_limits<int32_t>;
    const int64_t last = std::clamp<int64_t>(self().endFps(), Frames::min(), Frames::max());
    if (decode_) decode_->setFpsTotal(static_cast<int32_t>(last));
}

// The player may drop the decoder from within a callback: the turn keeps it until it is through.

void TimeSourceBase::decodeNextFpsWithGroupQueue() {
    const auto decode = decode_;
    if (!decode) return;
    decode->decodeNextFpsWithGroupQueue();
    for (const QVVideoReader* reader : decode->readers())
        if (!reader->damage().empty()) reportUsedOtherwise(self(), reader->damage(), reader->url());
}

void TimeSourceBase::fpsRenderCompletedHandle() {
    if (const auto decode = decode_) decode->fpsRenderCompletedHandle();
}

void TimeSourceBase::cancelDecode() {
    if (const auto decode = std::move(decode_)) decode->cancelDecode();
    dropPictures();
}

bool TimeSourceBase::isRootSceneCurrent() const {
    const auto scene = rootScene();
    return scene && context_.renderManager && context_.renderManager->currentScene() == scene;
}

void TimeSourceBase::frameCompleted(const Tick& tick) {
    const auto delegate = delegate_.lock();
    if (!delegate || !isRootSceneCurrent()) return;
    if (!isLoadNextSceneOnce_) {
        isLoadNextSceneOnce_ = true;
        delegate->didLoadNextScene(*this, rootScene());
    }
    if (tick.isNew && context_.sceneTansitionsInfo &&
        platform::saturatingDifference(self().endFps(), tick.frame) == tansitionsFpsTotal_)
        delegate->didSceneTransitions(*this, tansitionsType_, tansitionsSceneId_);
}

std::string TimeSourceBase::videoPath(const std::string& path) const {
    const auto scene = rootScene();
    return context_.renderManager->playback().settings().multiSceneRenderPathResourcesWithString(
        path, scene ? scene->sceneConfigData().sceneResourceFolderPath : std::string());
}

platform::FileGate& TimeSourceBase::gate() const { return context_.renderManager->playback().gate(); }

platform::Value TimeSourceBase::traceOfPicture(const std::string& path,
                                               const QVVideoFrameRenderOutput& picture) {
    return platform::Value(platform::Value::Dictionary{{"path", platform::Value(path)},
                                                       {"width", platform::Value(picture.frameWidth)},
                                                       {"height", platform::Value(picture.frameHeight)}});
}

void TimeSourceBase::report(const QVVideoReader& reader) {
    if (!reader.isReadable()) {
        reportSkipped(self(), "missing or unreadable video", reader.url());
    } else if (reader.hasOtherFrameRate()) {
        char rates[120];
        std::snprintf(rates, sizeof rates, "has %.2f frames a second, its \"videoFps\" says %d",
                      reader.sourceFrameRate(), reader.videoFps());
        reportUsedOtherwise(self(), rates, reader.url());
    }
}

}  // namespace multiscene
