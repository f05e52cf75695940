// The render driver. Glossary: "strat" is start.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "output/FrameSink.h"
#include "output/SoundSink.h"
#include "painter/Renderer.h"
#include "platform/base/Error.h"
#include "playback/Playback.h"
#include "playback/RenderDriver.h"
#include "renderLoop/FrameComposer.h"
#include "renderLoop/RunLoop.h"
#include "renderLoop/SceneSlots.h"
#include "report/FrameStatistics.h"

namespace multiscene {

class AUSAudioPlayer;
class QVMorrow3DGLVIew;
class QVVideoCVCacheExporter;

struct RenderDriverSettings {
    int32_t bufferWidth = 720, bufferHeight = 1280;  ///< pixels; a sink's own size wins
    int32_t sceneTextureMaxWidth = 1000;             ///< pixels
    int32_t framesPerSecond = 30;                    ///< of the group: when a preview's sounds are heard
    Renderer renderer = Renderer::Auto;
    /// Makes the GL context, where one is needed, on the render queue: for a window's; none: off screen.
    std::function<std::shared_ptr<platform::GLContext>()> makeContext = {};
};

/// Holds up to three scenes, renders them a frame a turn (FrameComposer) as long as a run lasts (RunLoop),
/// and counts the frames. States: created → running (stratRun) ⇄ paused → cancelled, failed or restarted.
///
/// Scenes, tweens, materials and the painter are touched on the render queue alone. Operations marked "any
/// thread" may be called from anywhere, the others on the queue. Must be released by another thread than the
/// render queue's; that waits for the current turn to end.
class QVMultiSceneRenderManager : public RenderDriver, private RunLoop::Work {
  public:
    using CompletionBlock = RunLoop::CompletionBlock;
    using RestartBlock = RunLoop::RestartBlock;
    using FailureBlock = std::function<void(const platform::Error&)>;
    using FrameBlock = std::function<void(int64_t)>;

    /// Makes the painter on the render queue. No sink: scenes are clocked, decoded and moved, but nothing is
    /// drawn. The sinks may be one object. Throws Error when GL is asked for and there is none.
    static std::shared_ptr<QVMultiSceneRenderManager> initWithFrameSink(std::shared_ptr<Playback> playback,
                                                                        std::shared_ptr<FrameSink> frameSink,
                                                                        std::shared_ptr<SoundSink> soundSink,
                                                                        const RenderDriverSettings& settings);
    /// The same for what is shown: the exporter, else the view, which then is the one sink, with an audio
    /// player. Either may be none.
    static std::shared_ptr<QVMultiSceneRenderManager> initWithMorrow3DGLVIew(
        std::shared_ptr<Playback> playback, const std::shared_ptr<QVMorrow3DGLVIew>& view,
        const std::shared_ptr<QVVideoCVCacheExporter>& videoExport, const RenderDriverSettings& settings);
    ~QVMultiSceneRenderManager() override;

    // Control, any thread
    /// Starts the loop on the render queue.
    void stratRun();
    /// Starts the run that reStartRender() announced, unless it was ended since.
    void stratRun(uint64_t run);
    /// Ends the runs started so far after their current turn, takes the scenes down and then calls back,
    /// once, on the render queue. What the painter kept, GL objects among it, is gone by then; a later
    /// stratRun() makes it again.
    void cancelRun(CompletionBlock completion) { loop_.cancel(std::move(completion)); }
    /// The same, for a group that has played to its end: called within its last frame, on the render queue.
    /// Nothing happens when that run was cancelled or started again before: who ends a run first, ends it.
    void finishRun(CompletionBlock completion) { loop_.finish(std::move(completion)); }
    /// Ends the runs as cancelRun() does, but keeps what the painter has and starts counting frames from 0
    /// again. The callback loads the first scene and sees to it that the run it is given is started;
    /// cancelling reaches that run already.
    void reStartRender(RestartBlock completion) { loop_.restart(std::move(completion)); }
    void pauseRun();
    void continueRun();
    bool isPauseRun() const { return loop_.isPaused(); }

    /// Runs a task on the render queue, ready to draw, and waits; what it throws is thrown here. While a loop
    /// runs it waits for the loop's end.
    void performOnRenderQueue(const std::function<void()>& task) { loop_.perform(task); }
    /// Makes the painter where it is missing. Any thread.
    void setupGlRender() {
        performOnRenderQueue([] {});
    }

    // Settings, any thread, before stratRun()
    /// Called on the render queue with the new count after each frame.
    void setFrameRenderingCompleteBlock(FrameBlock block) { frameRenderingCompleteBlock_ = std::move(block); }
    /// Called on the render queue when a run ends by itself because it cannot go on: a broken template, a
    /// file outside the fence, a failed sink, a current scene whose clock has stopped. Once a run, after the
    /// scenes were taken down; never after cancelRun().
    void setRunFailedBlock(FailureBlock block) { runFailedBlock_ = std::move(block); }
    /// Called on the render queue in each frame, after updateMatrix and before anything is drawn.
    void setFrameSampleBlock(FrameBlock block) { composer_.setSampleBlock(std::move(block)); }
    /// How long the loop rests after an exported frame, in seconds.
    void setExportPauseSeconds(double seconds) { exportPauseSeconds_ = seconds; }

    // Scene slots, render queue
    void setCurrentScene(std::shared_ptr<QVScene3D> scene) { slots_.current = std::move(scene); }
    void setNextScene(std::shared_ptr<QVScene3D> scene) { slots_.next = std::move(scene); }
    void setTransitionsScene(std::shared_ptr<QVScene3D> scene) { slots_.transition = std::move(scene); }
    /// A number that is no mode draws nothing but counts.
    void setSceneRenderType(SceneRenderType type) { slots_.mode = type; }
    /// A fresh empty scene becomes the current one.
    void setupScene();
    /// Whether frames may show scene textures of earlier ones (core/Material/SceneTextures.h).
    void setSceneTexturesLast(bool last) { composer_.setSceneTexturesLast(last); }
    /// Counts from 0 again; asked for inside a frame, only after that frame was counted.
    void resetCurrentRenderFps();
    /// A run that starts again takes a fresh sink where the old one cannot go on; one that takes the sounds
    /// too replaces both.
    void renewFrameSink();

    const std::shared_ptr<FrameSink>& frameSink() const { return frameSink_; }
    const std::shared_ptr<SoundSink>& soundSink() const { return soundSink_; }
    /// What a preview sounds like; none in an export.
    const std::shared_ptr<AUSAudioPlayer>& audioPlayer() const { return audioPlayer_; }
    const FrameStatistics& statistics() const { return statistics_; }  ///< after the run, or on the queue

    // RenderDriver
    int32_t bufferWidth() const override { return settings_.bufferWidth; }
    int32_t bufferHeight() const override { return settings_.bufferHeight; }
    int32_t sceneTextureMaxWidth() const override { return settings_.sceneTextureMaxWidth; }
    SceneRenderType sceneRenderType() const override { return slots_.mode; }
    std::shared_ptr<QVScene3D> currentScene() const override { return slots_.current; }
    std::shared_ptr<QVScene3D> nextScene() const override { return slots_.next; }
    std::shared_ptr<QVScene3D> transitionsScene() const override { return slots_.transition; }
    int64_t currentRenderFps() const override { return currentRenderFps_; }
    Playback& playback() override { return *playback_; }
    Painter& painter() override { return *painter_; }
    void startSoundEffect(const platform::Value& audioInfo) override;
    void stopSoundEffect(const std::string& audioKey) override;

  private:
    QVMultiSceneRenderManager(std::shared_ptr<Playback> playback, std::shared_ptr<FrameSink> frameSink,
                              std::shared_ptr<SoundSink> soundSink, const RenderDriverSettings& settings);
    static void release(QVMultiSceneRenderManager* manager);

    // RunLoop::Work
    void prepare() override;
    void takeTurn(uint64_t run) override;
    void interruptTurn() override;
    void startOver() override;
    void takeDown() override;
    void runFailed(const platform::Error& error) override;

    bool frameSinkIsReady();
    void requirePlayable() const;
    void render();

    std::shared_ptr<Playback> playback_;
    RenderDriverSettings settings_;
    std::mutex sinksMutex_;  // the render queue alone replaces them; others ask and use them under it
    std::shared_ptr<FrameSink> frameSink_;
    std::shared_ptr<SoundSink> soundSink_;
    std::shared_ptr<AUSAudioPlayer> audioPlayer_;  ///< the sound sink of a preview
    std::unique_ptr<Painter> painter_;             ///< from the first run on

    SceneSlots slots_;
    FrameStatistics statistics_;
    FrameComposer composer_{slots_, statistics_};
    std::atomic<int64_t> currentRenderFps_{0};
    bool isInFrame_ = false, isResetAsked_ = false;

    FrameBlock frameRenderingCompleteBlock_;
    FailureBlock runFailedBlock_;
    std::atomic<double> exportPauseSeconds_{0.015};

    RunLoop loop_{*this};  // last: its queue is joined first
};

}  // namespace multiscene
