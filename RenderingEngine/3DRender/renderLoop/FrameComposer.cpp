#include "renderLoop/FrameComposer.h"

#include "core/QVSceneRenderToTexture.h"
#include "playback/VideoTimeSource.h"

namespace multiscene {

void FrameComposer::render(int64_t frame, Painter& painter, FrameSink* sink) {
    // The scenes of the turn live until it ends, whatever happens to the slots.
    const SceneSlots turn = slots_;
    const Target target{painter, sink};
    switch (turn.mode) {
        case SceneRenderType::Single:
            return singleSceneRender(turn, frame, target);
        case SceneRenderType::TextureTransition:
            return doubleSceneTransitionsRender(turn, frame, target);
        case SceneRenderType::Overlay:
            return doubleSceneRender(turn, frame, target);
    }
}

void FrameComposer::singleSceneRender(const SceneSlots& turn, int64_t frame, Target target) {
    advance({turn.current}, frame);
    drawWhileWanted(target, [&] { drawOrLeaveOut({turn.current}, target); });
    closeFrame({turn.current}, {&slots_.current});
}

void FrameComposer::doubleSceneTransitionsRender(const SceneSlots& turn, int64_t frame, Target target) {
    const Scenes scenes{turn.current, turn.next, turn.transition};
    advance(scenes, frame);
    drawWhileWanted(target, [&] { drawTransition(turn, target); });
    closeFrame(scenes, {&slots_.current, &slots_.next, &slots_.transition});
}

void FrameComposer::doubleSceneRender(const SceneSlots& turn, int64_t frame, Target target) {
    const Scenes scenes{turn.current, turn.transition};
    advance(scenes, frame);
    drawWhileWanted(target, [&] { drawOrLeaveOut(scenes, target); });
    closeFrame(scenes, {&slots_.current, &slots_.transition});
}

void FrameComposer::advance(Scenes scenes, int64_t frame) {
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
    if (sampleBlock_) sampleBlock_(frame);
}

void FrameComposer::drawTransition(const SceneSlots& turn, Target target) {
    if (!target.sink) return;
    if (!target.sink->wantsNextFrame() && !sceneTexturesLast_)
        return leaveOut({turn.current, turn.next, turn.transition}, target);
    drawSceneTextures({turn.current, turn.next}, target);
    drawOrLeaveOut({turn.transition}, target);
}

void FrameComposer::drawSceneTextures(Scenes scenes, Target target) {
    const StageTimer timer(statistics_.draw);
    for (const auto& scene : scenes)
        if (scene) scene->renderToTextureObject().renderSceneToTexture(target.painter);
}

void FrameComposer::drawOrLeaveOut(Scenes scenes, Target target) {
    if (!target.sink) return;
    if (target.sink->wantsNextFrame())
        drawFrame(scenes, target);
    else
        leaveOut(scenes, target);
}

/// A picture is not drawn over the slot of a scene that is not there.
void FrameComposer::drawFrame(Scenes scenes, Target target) {
    {
        const StageTimer timer(statistics_.draw);
        target.painter.beginFrame(target.sink->width(), target.sink->height());
        for (const auto& scene : scenes)
            if (scene) scene->render(target.painter);
    }
    {
        const StageTimer timer(statistics_.paint);
        target.painter.endFrame(target.sink->frameCanvas());
    }
    const StageTimer timer(statistics_.handOver);
    target.sink->renderFrameToVideo();
    ++statistics_.drawnFrames;
}

/// Nobody looks at this frame; what nodes render into textures may be seen in later ones.
void FrameComposer::leaveOut(Scenes scenes, Target target) {
    const StageTimer timer(statistics_.draw);
    target.painter.resetState();
    for (const auto& scene : scenes)
        if (scene) scene->renderTargets(target.painter);
    target.sink->skipFrame();
}

/// Clocks that end change the slots: each is read anew.
void FrameComposer::closeFrame(Scenes scenes, Slots slots) {
    const StageTimer timer(statistics_.complete);
    for (const auto& scene : scenes)
        if (scene) scene->renderComplete();
    for (const auto* slot : slots) {
        const std::shared_ptr<QVScene3D> scene = *slot;
        if (!scene) continue;
        if (const auto timeSource = scene->timeSource()) timeSource->fpsRenderCompletedHandle();
    }
}

}  // namespace multiscene
