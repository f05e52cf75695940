// How QVMultiSceneRenderManager renders one frame in each of its modes.
#include <epoxy/gl.h>

#include <algorithm>

#include "core/GLESUtils/GLState.h"
#include "core/QVSceneRenderToTexture.h"
#include "core/VideoTimeSource.h"
#include "platform/base/Value.h"
#include "tween/QVTween.h"
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
void render(Scenes scenes) {
    for (const auto& scene : scenes)
        if (scene) scene->render();
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
    checkGLError();
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
    for (const auto& scene : {turn.next, turn.current})
        if (scene) scene->renderToTextureObject().clear();
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
    QVTween::update();
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
    GLState::bindTarget(frameSink_->renderToTextureFrameBufferID(), bufferWidth(), bufferHeight());
    for (const auto& scene : scenes)
        if (scene) scene->renderTargets();
    frameSink_->skipFrame();
}

void QVMultiSceneRenderManager::drawSceneTextures(Scenes scenes) {
    if (!frameSink_) return;
    const StageTimer timer(statistics_.draw);
    for (const auto& scene : scenes)
        if (scene) scene->renderToTextureObject().renderSceneToTexture();
}

void QVMultiSceneRenderManager::drawFrame(Scenes scenes) {
    const bool isDrawn = mayDrawTwice(scenes) && !isWholeFrameMultisampled_ && drawInRegions(scenes);
    if (!isDrawn) drawMultisampled(scenes);
    handOver();
    ++statistics_.drawnFrames;
}

bool QVMultiSceneRenderManager::mayDrawTwice(Scenes scenes) const {
    return settings_.multisamplesRegions && msaaTarget_.samples() > 1 &&
           std::none_of(scenes.begin(), scenes.end(),
                        [](const auto& scene) { return scene && scene->drawsIntoTextures(); });
}

/// One sample everywhere, then several along the outlines. False when the frame turned out to need several
/// everywhere; it is then not drawn.
bool QVMultiSceneRenderManager::drawInRegions(Scenes scenes) {
    const StageTimer timer(statistics_.draw);
    FrameEdges& edges = FrameEdges::shared();
    edges.beginRecording(bufferWidth(), bufferHeight());
    GLState::bindTarget(frameSink_->renderToTextureFrameBufferID(), bufferWidth(), bufferHeight());
    GLState::clearColor();
    multiscene::render(scenes);
    const auto regions = edges.endRecording();
    isWholeFrameMultisampled_ = !regions;
    if (!regions) return false;
    drawRegions(*regions, scenes);
    finishStage();
    return true;
}

/// From the top down: what is drawn multisampled and clipped touches samples of the row below the clip
/// (Mesa's software renderer), and the region that lies there must not have been drawn yet, because it starts
/// by clearing.
void QVMultiSceneRenderManager::drawRegions(std::vector<PixelRect> regions, Scenes scenes) {
    if (regions.empty()) return;
    std::ranges::sort(regions, std::greater{}, &PixelRect::y);
    FrameEdges& edges = FrameEdges::shared();
    for (const PixelRect& region : regions) {
        GLState::setScissor(region);
        edges.clipTo(region);
        renderingBeforeConfig();
        multiscene::render(scenes);
    }
    edges.endClipping();
    GLState::resetScissor();
    msaaTarget_.resolveInto(frameSink_->renderToTextureFrameBufferID(), regions);
}

/// Records the outlines all the same, to know whether the next frame can be drawn in regions.
void QVMultiSceneRenderManager::drawMultisampled(Scenes scenes) {
    {
        const StageTimer timer(statistics_.draw);
        FrameEdges::shared().beginRecording(bufferWidth(), bufferHeight());
        renderingBeforeConfig();
        multiscene::render(scenes);
        isWholeFrameMultisampled_ = !FrameEdges::shared().endRecording();
        finishStage();
    }
    renderingAfterConfig();
}

/// The sink's own framebuffer needs no clearing: the resolve covers all of it.
void QVMultiSceneRenderManager::renderingBeforeConfig() {
    msaaTarget_.bindAndClear();
    GLState::bindTarget(msaaTarget_.frameBuffer(), bufferWidth(), bufferHeight());
}

void QVMultiSceneRenderManager::renderingAfterConfig() {
    {
        const StageTimer timer(statistics_.resolve);
        msaaTarget_.resolveInto(frameSink_->renderToTextureFrameBufferID());
        finishStage();
    }
}

void QVMultiSceneRenderManager::handOver() {
    const StageTimer timer(statistics_.readBack);
    frameSink_->renderFrameToVideo();
    msaaTarget_.discard();
}

/// Taking the frame over waits for GL anyway; waiting earlier only tells the stages apart.
void QVMultiSceneRenderManager::finishStage() const {
    if (settings_.finishEachStage) GLState::finish();
}

void QVMultiSceneRenderManager::checkGLError() { glGetError(); }

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
