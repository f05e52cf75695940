// The render driver: GL context, render queue, frame target and the loop that renders a scene group frame by
// frame. Glossary: "strat" is start.
#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/QVScene3D.h"
#include "core/RenderDriver.h"
#include "painter/Renderer.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/Error.h"
#include "videoRenderCore/FrameSink.h"
#include "videoRenderCore/FrameStatistics.h"
#include "videoRenderCore/SoundSink.h"

namespace multiscene {

struct RenderDriverSettings {
    int32_t bufferWidth = 720, bufferHeight = 1280;  ///< pixels; a sink's own size wins
    int32_t sceneTextureMaxWidth = 1000;             ///< pixels
    Renderer renderer = Renderer::Auto;
    /// Makes the GL context, where one is needed, on the render queue: for a window's; none: off screen.
    std::function<std::shared_ptr<platform::GLContext>()> makeContext = {};
};

/// Holds up to three scenes and renders one frame a loop turn in one of three modes. States: created →
/// running (stratRun) ⇄ paused → cancelled, failed or restarted.
///
/// The loop occupies the render queue until it ends; scenes, tweens, materials and GL objects are touched on
/// that queue alone. Operations marked "any thread" may be called from anywhere, the others on the queue.
/// Must be released by another thread than the render queue's; that waits for the current turn to end.
class QVMultiSceneRenderManager : public RenderDriver {
  public:
    using CompletionBlock = std::function<void()>;
    using RestartBlock = std::function<void(uint64_t run)>;
    using FailureBlock = std::function<void(const platform::Error&)>;
    using FrameBlock = std::function<void(int64_t)>;

    /// Builds context and frame target on the render queue. No sink: scenes are clocked, decoded and moved,
    /// but nothing is drawn. The sinks may be one object. Throws Error when there is no GL.
    static std::shared_ptr<QVMultiSceneRenderManager> initWithFrameSink(std::shared_ptr<FrameSink> frameSink,
                                                                        std::shared_ptr<SoundSink> soundSink,
                                                                        const RenderDriverSettings& settings);
    ~QVMultiSceneRenderManager() override;

    /// The manager made last, while it lives. Any thread.
    static std::shared_ptr<QVMultiSceneRenderManager> shared();

    // Control, any thread
    /// Starts the loop on the render queue.
    void stratRun();
    /// Starts the run that reStartRender() announced, unless it was ended since.
    void stratRun(uint64_t run);
    /// Ends the runs started so far after their current turn, takes the scenes down and then calls back,
    /// once, on the render queue. The GL objects of the driver and its sink are gone by then; a later
    /// stratRun() makes them again.
    void cancelRun(CompletionBlock completion);
    /// The same, for a group that has played to its end: called within its last frame, on the render queue.
    /// Nothing happens when that run was cancelled or started again before: who ends a run first, ends it.
    void finishRun(CompletionBlock completion);
    /// Ends the runs as cancelRun() does, but keeps the GL set-up and starts counting frames from 0 again.
    /// The callback loads the first scene and sees to it that the run it is given is started; cancelling
    /// reaches that run already.
    void reStartRender(RestartBlock completion);
    void pauseRun();
    void continueRun();
    bool isPauseRun() const { return isPauseRun_; }

    /// Runs a task on the render queue, with the context current, and waits; what it throws is thrown here.
    /// While a loop runs it waits for the loop's end.
    void performOnRenderQueue(const std::function<void()>& task);
    /// Makes the painter, where it is missing, and its context current. Any thread.
    void setupGlRender();

    // Settings, any thread, before stratRun()
    /// Called on the render queue with the new count after each frame.
    void setFrameRenderingCompleteBlock(FrameBlock block) { frameRenderingCompleteBlock_ = std::move(block); }
    /// Called on the render queue when a run ends by itself because it cannot go on: a broken template, a
    /// file outside the fence, a failed sink, a current scene whose clock has stopped. Once a run, after the
    /// scenes were taken down; never after cancelRun().
    void setRunFailedBlock(FailureBlock block) { runFailedBlock_ = std::move(block); }
    /// Called on the render queue in each frame, after updateMatrix and before anything is drawn.
    void setFrameSampleBlock(FrameBlock block) { frameSampleBlock_ = std::move(block); }
    /// How long the loop rests after an exported frame, in seconds.
    void setExportPauseSeconds(double seconds) { exportPauseSeconds_ = seconds; }

    // Scene slots, render queue
    void setCurrentScene(std::shared_ptr<QVScene3D> scene) { currentScene_ = std::move(scene); }
    void setNextScene(std::shared_ptr<QVScene3D> scene) { nextScene_ = std::move(scene); }
    void setTransitionsScene(std::shared_ptr<QVScene3D> scene) { transitionsScene_ = std::move(scene); }
    /// A number that is no mode draws nothing but counts.
    void setSceneRenderType(SceneRenderType type) { sceneRenderType_ = type; }
    /// A fresh empty scene becomes the current one.
    void setupScene();
    /// Counts from 0 again; asked for inside a frame, only after that frame was counted.
    void resetCurrentRenderFps();
    /// A run that starts again takes a fresh sink where the old one cannot go on; one that takes the sounds
    /// too replaces both.
    void renewFrameSink();

    const std::shared_ptr<FrameSink>& frameSink() const { return frameSink_; }
    const std::shared_ptr<SoundSink>& soundSink() const { return soundSink_; }
    const FrameStatistics& statistics() const { return statistics_; }  ///< after the run, or on the queue

    // RenderDriver
    int32_t bufferWidth() const override { return settings_.bufferWidth; }
    int32_t bufferHeight() const override { return settings_.bufferHeight; }
    int32_t sceneTextureMaxWidth() const override { return settings_.sceneTextureMaxWidth; }
    SceneRenderType sceneRenderType() const override { return sceneRenderType_; }
    std::shared_ptr<QVScene3D> currentScene() const override { return currentScene_; }
    std::shared_ptr<QVScene3D> nextScene() const override { return nextScene_; }
    std::shared_ptr<QVScene3D> transitionsScene() const override { return transitionsScene_; }
    int64_t currentRenderFps() const override { return currentRenderFps_; }
    Painter& painter() override { return *painter_; }
    void startSoundEffect(const platform::Value& audioInfo) override;
    void stopSoundEffect(const std::string& audioKey) override;

  private:
    /// The scenes of one turn, kept alive until it ends whatever happens to the slots.
    struct Turn {
        std::shared_ptr<QVScene3D> current, next, transition;
    };

    QVMultiSceneRenderManager(std::shared_ptr<FrameSink> frameSink, std::shared_ptr<SoundSink> soundSink,
                              const RenderDriverSettings& settings);

    // Set-up and tear-down
    void useMultiSceneRenderContext();
    void clearScenes();
    void takeDown();
    void interruptRuns();
    void endRuns(CompletionBlock completion);

    // The loop
    bool isCancelled(uint64_t run) const { return cancelledRuns_ >= run; }
    void loop(uint64_t run);
    void turn(uint64_t run);
    void sleepUnlessCancelled(uint64_t run, double seconds);
    bool frameSinkIsReady();
    void requirePlayable() const;
    void endFailedRun(uint64_t run, const platform::Error& error);
    void callBack(const CompletionBlock& block);

    // One frame, FrameBodies.cpp
    void render();
    void runFrameBody();
    void singleSceneRender(const Turn& turn);
    void doubleSceneTransitionsRender(const Turn& turn);
    void doubleSceneRender(const Turn& turn);
    using Scenes = std::initializer_list<std::shared_ptr<QVScene3D>>;
    using Slots = std::initializer_list<std::shared_ptr<QVScene3D>*>;
    void advance(Scenes scenes);
    void closeFrame(Scenes scenes, Slots slots);
    bool mustDraw() const;
    void leaveOut(Scenes scenes);
    void drawSceneTextures(Scenes scenes);
    void drawFrame(Scenes scenes);

    RenderDriverSettings settings_;
    std::shared_ptr<FrameSink> frameSink_;
    std::shared_ptr<SoundSink> soundSink_;
    std::unique_ptr<Painter> painter_;  ///< from the first run on

    std::shared_ptr<QVScene3D> currentScene_, nextScene_, transitionsScene_;
    SceneRenderType sceneRenderType_ = SceneRenderType::Single;
    std::atomic<int64_t> currentRenderFps_{0};
    bool isInFrame_ = false, isResetAsked_ = false;
    FrameStatistics statistics_;

    FrameBlock frameRenderingCompleteBlock_, frameSampleBlock_;
    FailureBlock runFailedBlock_;
    std::atomic<double> exportPauseSeconds_{0.015};

    // Runs are numbered from 1; cancelling reaches every run started before it and none started later.
    std::atomic<uint64_t> startedRuns_{0}, cancelledRuns_{0};
    uint64_t currentRun_ = 0;  // render queue
    std::atomic<bool> isPauseRun_{false};
    std::mutex wakeMutex_;
    std::condition_variable wakeSignal_;

    platform::DispatchQueue glviewTimeSourceQueue_{"qvglview time source queue"};  // last: joined first
};

}  // namespace multiscene
