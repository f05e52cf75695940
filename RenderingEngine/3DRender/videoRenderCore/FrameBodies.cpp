// How QVMultiSceneRenderManager renders one frame in each of its modes.
#include <algorithm>

#include "core/QVSceneRenderToTexture.h"
#include "core/VideoTimeSource.h"
#include "platform/base/Value.h"
#include "videoRenderCore/QVMultiSceneRenderManager.h"

namespace multiscene {

namespace {

/// The group frame at which a window of `length` frames ends that starts at `start`.
int64_t windowEnd(int64_t start, int64_t length) {
    int64_t end = 0;
    return __builtin_add_overflow(start, length, &end) ? INT64_MAX : end;
}

using Scenes = std::initializer_list<std::shared_ptr<QVScene3D>>;

/// A picture is not drawn over the slot of a scene that is not there.
void render(Scenes scenes, Painter& painter) {
    for (const auto& scene : scenes)
        if (scene) scene->render(painter);
}

}  // namespace

void QVMultiSceneRenderManager::render() {
    useMultiSceneRenderContext();
    isInFrame_ = true;
    runFrameBody();
    isInFrame_ = false;
    ++currentRenderFps_;
    ++statistics_.frames;
    if (frameRenderingCompleteBlock_) frameRenderingCompleteBlock_(currentRenderFps_);
    if (std::exchange(isResetAsked_, false)) currentRenderFps_ = 0;
}

void QVMultiSceneRenderManager::runFrameBody() {
    const Turn turn{currentScene_, nextScene_, transitionsScene_};
    switch (sceneRenderType_) {
        case SceneRenderType::Single:
            return singleSceneRender(turn);
        case SceneRenderType::TextureTransition:
            return doubleSceneTransitionsRender(turn);
        case SceneRenderType::Overlay:
            return doubleSceneRender(turn);
    }
}

void QVMultiSceneRenderManager::singleSceneRender(const Turn& turn) {
    advance({turn.current});
    if (mustDraw())
        drawFrame({turn.current});
    else
        leaveOut({turn.current});
    closeFrame({turn.current}, {&currentScene_});
}

void QVMultiSceneRenderManager::doubleSceneTransitionsRender(const Turn& turn) {
    const Scenes scenes{turn.current, turn.next, turn.transition};
    advance(scenes);
    // Later frames may show these textures too, so they are drawn in frames that are left out as well.
    drawSceneTextures({turn.current, turn.next});
    if (mustDraw())
        drawFrame({turn.transition});
    else
        leaveOut({turn.transition});
    closeFrame(scenes, {&currentScene_, &nextScene_, &transitionsScene_});
}

void QVMultiSceneRenderManager::doubleSceneRender(const Turn& turn) {
    const Scenes scenes{turn.current, turn.transition};
    advance(scenes);
    if (mustDraw())
        drawFrame(scenes);
    else
        leaveOut(scenes);
    closeFrame(scenes, {&currentScene_, &transitionsScene_});
}

void QVMultiSceneRenderManager::advance(Scenes scenes) {
    {
        const StageTimer timer(statistics_.decode);
        for (const auto& scene : scenes)
            if (scene && scene->timeSource()) scene->timeSource()->decodeNextFpsWithGroupQueue();
    }
    const StageTimer timer(statistics_.update);
    for (const auto& scene : scenes)
        if (scene) scene->updateData();
    for (const auto& scene : scenes)
        if (scene) scene->tweens().update();
    for (const auto& scene : scenes)
        if (scene) scene->updateMatrix();
    if (frameSampleBlock_) frameSampleBlock_(currentRenderFps_);
}

/// Clocks that end change the slots: each is read anew.
void QVMultiSceneRenderManager::closeFrame(Scenes scenes, Slots slots) {
    const StageTimer timer(statistics_.complete);
    for (const auto& scene : scenes)
        if (scene) scene->renderComplete();
    for (const auto* slot : slots) {
        const std::shared_ptr<QVScene3D> scene = *slot;
        if (!scene) continue;
        if (const auto timeSource = scene->timeSource()) timeSource->fpsRenderCompletedHandle();
    }
}

bool QVMultiSceneRenderManager::mustDraw() const { return frameSink_ && frameSink_->wantsNextFrame(); }

/// Nobody looks at this frame; what nodes render into textures may be seen in later ones.
void QVMultiSceneRenderManager::leaveOut(Scenes scenes) {
    if (!frameSink_) return;
    const StageTimer timer(statistics_.draw);
    painter_->resetState();
    for (const auto& scene : scenes)
        if (scene) scene->renderTargets(*painter_);
    frameSink_->skipFrame();
}

void QVMultiSceneRenderManager::drawSceneTextures(Scenes scenes) {
    if (!frameSink_) return;
    const StageTimer timer(statistics_.draw);
    for (const auto& scene : scenes)
        if (scene) scene->renderToTextureObject().renderSceneToTexture(*painter_);
}

void QVMultiSceneRenderManager::drawFrame(Scenes scenes) {
    {
        const StageTimer timer(statistics_.draw);
        painter_->beginFrame(bufferWidth(), bufferHeight());
        multiscene::render(scenes, *painter_);
    }
    {
        const StageTimer timer(statistics_.paint);
        painter_->endFrame(frameSink_->frameCanvas());
    }
    const StageTimer timer(statistics_.handOver);
    frameSink_->renderFrameToVideo();
    ++statistics_.drawnFrames;
}

void QVMultiSceneRenderManager::startSoundEffect(const platform::Value& audioInfo) {
    if (!soundSink_) return;
    const int64_t start = currentRenderFps_;
    const int64_t length = audioInfo.integer("fpsEnd") - audioInfo.integer("fpsStart");
    soundSink_->addAudioTrackWithInfo(
        audioInfo.with("fpsStart", start).with("fpsEnd", windowEnd(start, length)));
}

void QVMultiSceneRenderManager::stopSoundEffect(const std::string& audioKey) {
    if (soundSink_) soundSink_->deleteChannelWithKey(audioKey, false);
}

}  // namespace multiscene
