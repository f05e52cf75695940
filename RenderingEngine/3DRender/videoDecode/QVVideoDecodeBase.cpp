#include "videoDecode/QVVideoDecodeBase.h"

#include "core/QVScene3D.h"
#include "platform/base/Clock.h"

namespace multiscene {

QVVideoDecodeBase::QVVideoDecodeBase()
    : resumed_(platform::NotificationCenter::shared().addObserver(kRefushMultiSceneRenderStartTime,
                                                                  [this] { refushRenderStartTime(); })) {}

void QVVideoDecodeBase::startOnce() {
    if (isStartDecodeOnce_) return;
    isStartDecodeOnce_ = true;
    if (onVideoDecodeStart) onVideoDecodeStart();
    startRenderTime_ = platform::monotonicSeconds();
}

void QVVideoDecodeBase::decodeNextFpsWithGroupQueue() {
    startOnce();
    if (!readFrame()) {
        // The last picture is held for this turn, and the frame time stays.
        completedOrFailed_ = true;
        return;
    }
    computeRenderType();
    const platform::CMTime time = frameTime();
    if (isPlayAtActualSpeed_ && timeSourceRenderType_ == TimeSourceRenderType::Presented)
        keepPace(time.timescale);
    deliverFrame();
    if (const auto scene = currentScene_.lock()) scene->setCurrentRenderTime(time);
    if (currentFps_ >= fpsTotal_) completedOrFailed_ = true;
    ++currentFps_;
}

void QVVideoDecodeBase::keepPace(int32_t framesPerSecond) {
    const double now = platform::monotonicSeconds();
    if (isRebaseAsked_.exchange(false)) {
        startRenderTime_ = now;
        startRenderFps_ = currentFps_;
    }
    if (framesPerSecond <= 0) return;
    const double due = static_cast<double>(currentFps_ - startRenderFps_) / framesPerSecond;
    platform::sleepSeconds(due - (now - startRenderTime_));
}

void QVVideoDecodeBase::fpsRenderCompletedHandle() {
    if (!completedOrFailed_) return;
    cancelDecode();
    if (onVideoDecodeFinish) onVideoDecodeFinish();
}

void QVVideoDecodeBase::computeRenderType() {
    if (!renderManager_) return;
    const auto scene = currentScene_.lock();
    const auto typeWhen = [](bool presented) {
        return presented ? TimeSourceRenderType::Presented : TimeSourceRenderType::Hidden;
    };
    switch (renderManager_->sceneRenderType()) {
        case SceneRenderType::Single:
            if (scene == renderManager_->currentScene())
                timeSourceRenderType_ = TimeSourceRenderType::Presented;
            break;
        case SceneRenderType::TextureTransition:
            timeSourceRenderType_ = typeWhen(scene == renderManager_->transitionsScene());
            break;
        case SceneRenderType::Overlay:
            timeSourceRenderType_ = typeWhen(scene == renderManager_->currentScene());
            break;
    }
}

}  // namespace multiscene
