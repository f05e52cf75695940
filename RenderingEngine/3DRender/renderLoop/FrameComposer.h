#pragma once

#include <functional>
#include <initializer_list>

#include "output/FrameSink.h"
#include "painter/Painter.h"
#include "renderLoop/SceneSlots.h"
#include "report/FrameStatistics.h"

namespace multiscene {

/// Renders one frame of the scenes in their slots: the passes of docs/frame.md, in each of the three modes.
/// Render queue only.
class FrameComposer {
  public:
    using FrameBlock = std::function<void(int64_t)>;

    /// Both outlive this.
    FrameComposer(SceneSlots& slots, FrameStatistics& statistics) : slots_(slots), statistics_(statistics) {}

    /// Called in each frame with its number, after updateMatrix and before anything is drawn.
    void setSampleBlock(FrameBlock block) { sampleBlock_ = std::move(block); }

    /// Whether later frames may show the textures that scenes are drawn into: else those of frames that are
    /// left out are not drawn.
    void setSceneTexturesLast(bool last) { sceneTexturesLast_ = last; }

    /// No sink: scenes are clocked, decoded and moved, but nothing is drawn.
    void render(int64_t frame, Painter& painter, FrameSink* sink);

  private:
    using Scenes = std::initializer_list<std::shared_ptr<QVScene3D>>;
    using Slots = std::initializer_list<std::shared_ptr<QVScene3D>*>;
    /// What one frame is drawn with.
    struct Target {
        Painter& painter;
        FrameSink* sink;
    };

    /// Draws it as often as it is wanted.
    template <typename Draw>
    static void drawWhileWanted(Target target, const Draw& draw) {
        do draw();
        while (target.sink && target.sink->wantsFrameAgain());
    }
    void singleSceneRender(const SceneSlots& turn, int64_t frame, Target target);
    void doubleSceneTransitionsRender(const SceneSlots& turn, int64_t frame, Target target);
    void doubleSceneRender(const SceneSlots& turn, int64_t frame, Target target);

    void advance(Scenes scenes, int64_t frame);
    void drawTransition(const SceneSlots& turn, Target target);
    void drawSceneTextures(Scenes scenes, Target target);
    void drawOrLeaveOut(Scenes scenes, Target target);
    void drawFrame(Scenes scenes, Target target);
    void leaveOut(Scenes scenes, Target target);
    void closeFrame(Scenes scenes, Slots slots);

    SceneSlots& slots_;
    FrameStatistics& statistics_;
    FrameBlock sampleBlock_;
    bool sceneTexturesLast_ = true;
};

}  // namespace multiscene
