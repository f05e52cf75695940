#include "videoRenderCore/QVMultiSceneRenderManager.h"

#include <chrono>

#include "core/VideoTimeSource.h"
#include "painter/Renderer.h"
#include "platform/base/CurrentError.h"
#include "platform/base/FileGate.h"
#include "platform/base/NotificationCenter.h"
#include "videoDecode/QVVideoDecodeBase.h"

namespace multiscene {

namespace {

constexpr double pausedTurnSeconds = 0.1;

std::mutex sharedMutex;
std::weak_ptr<QVMultiSceneRenderManager> sharedManager;

/// What a task threw, as the error that a user can be shown.
std::optional<platform::Error> errorOf(const std::function<void()>& task) {
    try {
        task();
        return std::nullopt;
    } catch (...) {
        return platform::currentError();
    }
}

void cancelDecode(const std::shared_ptr<QVScene3D>& scene) {
    if (scene && scene->timeSource()) scene->timeSource()->cancelDecode();
}

}  // namespace

std::shared_ptr<QVMultiSceneRenderManager> QVMultiSceneRenderManager::initWithFrameSink(
    std::shared_ptr<FrameSink> frameSink, std::shared_ptr<SoundSink> soundSink,
    const RenderDriverSettings& settings) {
    // A clock may hold the last reference for a moment, on the queue that the destructor joins.
    const auto release = [](QVMultiSceneRenderManager* manager) {
        {
            const std::lock_guard lock(manager->wakeMutex_);
            manager->interruptRuns();
        }
        if (manager->glviewTimeSourceQueue_.isCurrent())
            platform::DispatchQueue::main().async([manager] { delete manager; });
        else
            delete manager;
    };
    std::shared_ptr<QVMultiSceneRenderManager> manager(
        new QVMultiSceneRenderManager(std::move(frameSink), std::move(soundSink), settings), release);
    manager->setupGlRender();
    manager->performOnRenderQueue([&] { manager->setupScene(); });
    const std::lock_guard lock(sharedMutex);
    sharedManager = manager;
    return manager;
}

QVMultiSceneRenderManager::QVMultiSceneRenderManager(std::shared_ptr<FrameSink> frameSink,
                                                     std::shared_ptr<SoundSink> soundSink,
                                                     const RenderDriverSettings& settings)
    : settings_(settings), frameSink_(std::move(frameSink)), soundSink_(std::move(soundSink)) {
    if (!frameSink_) return;
    settings_.bufferWidth = frameSink_->width();
    settings_.bufferHeight = frameSink_->height();
}

QVMultiSceneRenderManager::~QVMultiSceneRenderManager() {
    glviewTimeSourceQueue_.sync([this] {
        takeDown();
        painter_.reset();
        platform::GLContext::clearCurrent();
    });
}

std::shared_ptr<QVMultiSceneRenderManager> QVMultiSceneRenderManager::shared() {
    const std::lock_guard lock(sharedMutex);
    return sharedManager.lock();
}

void QVMultiSceneRenderManager::performOnRenderQueue(const std::function<void()>& task) {
    std::optional<platform::Error> error;
    glviewTimeSourceQueue_.sync([&] {
        error = errorOf([&] {
            useMultiSceneRenderContext();
            task();
        });
    });
    if (error) throw platform::Error(*error);
}

void QVMultiSceneRenderManager::setupGlRender() {
    performOnRenderQueue([] {});
}

void QVMultiSceneRenderManager::useMultiSceneRenderContext() {
    if (!painter_) painter_ = makePainter(settings_.renderer, settings_.makeContext);
    painter_->makeCurrent();
}

void QVMultiSceneRenderManager::takeDown() {
    if (!painter_) return;
    // Without its context nothing can be deleted, and the context takes everything with it.
    errorOf([this] {
        useMultiSceneRenderContext();
        clearScenes();
        painter_->release();
    });
    platform::GLContext::clearCurrent();
}

void QVMultiSceneRenderManager::setupScene() { currentScene_ = QVScene3D::initRenderManager(*this); }

void QVMultiSceneRenderManager::clearScenes() {
    for (auto* slot : {&currentScene_, &nextScene_, &transitionsScene_}) cancelDecode(*slot);
    for (auto* slot : {&currentScene_, &nextScene_, &transitionsScene_}) {
        if (!*slot) continue;
        (*slot)->dispose();
        (*slot)->removeAllChild();
        slot->reset();
    }
    sceneRenderType_ = SceneRenderType::Single;
}

void QVMultiSceneRenderManager::resetCurrentRenderFps() {
    if (isInFrame_)
        isResetAsked_ = true;
    else
        currentRenderFps_ = 0;
}

void QVMultiSceneRenderManager::renewFrameSink() {
    if (!frameSink_) return;
    std::shared_ptr<FrameSink> fresh = frameSink_->freshSink();
    if (!fresh) return;
    const std::lock_guard lock(wakeMutex_);
    frameSink_ = fresh;
    if (auto sound = std::dynamic_pointer_cast<SoundSink>(fresh)) soundSink_ = std::move(sound);
}

// --- control -------------------------------------------------------------------------------------------

void QVMultiSceneRenderManager::stratRun() { stratRun(++startedRuns_); }

void QVMultiSceneRenderManager::stratRun(uint64_t run) {
    glviewTimeSourceQueue_.async([this, run] { loop(run); });
    const std::lock_guard lock(wakeMutex_);
    if (soundSink_) soundSink_->resumeAudio();
}

// Under wakeMutex_: what follows a run is queued under the lock that the run is ended under, so that no
// tear-down hits a later one.

void QVMultiSceneRenderManager::interruptRuns() {
    cancelledRuns_ = startedRuns_.load();
    wakeSignal_.notify_all();
    if (frameSink_) frameSink_->wake();
}

void QVMultiSceneRenderManager::endRuns(CompletionBlock completion) {
    interruptRuns();
    glviewTimeSourceQueue_.async([this, completion = std::move(completion)] {
        takeDown();
        callBack(completion);
    });
}

void QVMultiSceneRenderManager::cancelRun(CompletionBlock completion) {
    const std::lock_guard lock(wakeMutex_);
    endRuns(std::move(completion));
}

void QVMultiSceneRenderManager::finishRun(CompletionBlock completion) {
    const std::lock_guard lock(wakeMutex_);
    if (!isCancelled(currentRun_)) endRuns(std::move(completion));
}

void QVMultiSceneRenderManager::reStartRender(RestartBlock completion) {
    const std::lock_guard lock(wakeMutex_);
    interruptRuns();
    glviewTimeSourceQueue_.async([this, run = ++startedRuns_, completion = std::move(completion)] {
        callBack([&] {
            useMultiSceneRenderContext();
            clearScenes();
            resetCurrentRenderFps();
            if (completion) completion(run);
        });
    });
}

void QVMultiSceneRenderManager::pauseRun() {
    isPauseRun_ = true;
    const std::lock_guard lock(wakeMutex_);
    if (soundSink_) soundSink_->pauseAudio();
}

void QVMultiSceneRenderManager::continueRun() {
    platform::NotificationCenter::shared().post(kRefushMultiSceneRenderStartTime);
    isPauseRun_ = false;
    const std::lock_guard lock(wakeMutex_);
    wakeSignal_.notify_all();
    if (soundSink_) soundSink_->resumeAudio();
}

// --- the loop ------------------------------------------------------------------------------------------

void QVMultiSceneRenderManager::loop(uint64_t run) {
    currentRun_ = run;
    const auto error = errorOf([&] {
        if (isCancelled(run)) return;
        useMultiSceneRenderContext();
        while (!isCancelled(run)) turn(run);
    });
    isInFrame_ = isResetAsked_ = false;
    if (error) endFailedRun(run, *error);
}

void QVMultiSceneRenderManager::turn(uint64_t run) {
    if (isPauseRun_) return sleepUnlessCancelled(run, pausedTurnSeconds);
    if (!frameSinkIsReady()) return;
    requirePlayable();
    render();
    if (frameSink_ && frameSink_->isExport()) sleepUnlessCancelled(run, exportPauseSeconds_);
}

/// Resuming ends a sleep too.
void QVMultiSceneRenderManager::sleepUnlessCancelled(uint64_t run, double seconds) {
    if (seconds <= 0) return;
    std::unique_lock lock(wakeMutex_);
    const bool wasPaused = isPauseRun_;
    wakeSignal_.wait_for(lock, std::chrono::duration<double>(seconds),
                         [&] { return isCancelled(run) || isPauseRun_ != wasPaused; });
}

bool QVMultiSceneRenderManager::frameSinkIsReady() {
    if (!frameSink_ || frameSink_->isOkCaptureScreenVideo()) return true;
    const StageTimer timer(statistics_.wait);
    if (frameSink_->waitUntilOk()) return true;
    if (const auto failure = frameSink_->failure()) throw platform::Error(*failure);
    return false;
}

/// Ends a run that would go on for ever, or that reads what it must not.
void QVMultiSceneRenderManager::requirePlayable() const {
    for (const auto& refusal : platform::FileGate::shared().refusals())
        throw platform::Error(platform::ErrorKind::Template, platform::describe(refusal.verdict),
                              refusal.path);
    if (currentScene_ && currentScene_->timeSource() && currentScene_->timeSource()->isAlive()) return;
    throw platform::Error(
        platform::ErrorKind::Failed, "the scene has no running clock, so it would never end",
        currentScene_ ? currentScene_->sceneConfigData().scenePlistPath : std::string(), "TimeSource");
}

void QVMultiSceneRenderManager::endFailedRun(uint64_t run, const platform::Error& error) {
    const bool wasCancelled = isCancelled(run);
    takeDown();
    if (!wasCancelled && runFailedBlock_) runFailedBlock_(error);
}

/// Nothing may escape into the queue: what fails outside a run is reported as a failed run.
void QVMultiSceneRenderManager::callBack(const CompletionBlock& block) {
    if (!block) return;
    const auto error = errorOf(block);
    if (!error) return;
    takeDown();
    if (runFailedBlock_) runFailedBlock_(*error);
}

}  // namespace multiscene
