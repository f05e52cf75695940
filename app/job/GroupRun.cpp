#include "app/job/GroupRun.h"

#include <algorithm>

#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "platform/base/DispatchQueue.h"

namespace multiscene {

using platform::DispatchQueue;
using platform::Error;
using platform::ErrorKind;

namespace {

constexpr double kReportInterval = 0.1;  // seconds

/// Lets the pump of the main queue look at its condition at once.
void wakeMainThread() {
    DispatchQueue::main().async([] {});
}

RenderDriverSettings driverSettings(const PreparedGroup& group) {
    RenderDriverSettings settings;
    settings.bufferWidth = group.layout.drawnWidth;
    settings.bufferHeight = group.layout.drawnHeight;
    settings.renderer = group.renderer;
    return settings;
}

}  // namespace

void GroupRun::Shared::countFrame() {
    if (++frames == frameLimit) wakeMainThread();
}

void GroupRun::Shared::fail(const Error& failure) {
    {
        const std::lock_guard lock(mutex);
        if (!error) error = failure;
    }
    wakeMainThread();
}

std::optional<Error> GroupRun::Shared::failure() {
    const std::lock_guard lock(mutex);
    return error;
}

GroupRun::GroupRun(const PreparedGroup& group, std::shared_ptr<FrameSink> frameSink,
                   std::shared_ptr<SoundSink> soundSink, JobObserver& observer, std::stop_token stop)
    : group_(group), observer_(observer), stop_(std::move(stop)), shared_(std::make_shared<Shared>()) {
    manager_ = QVMultiSceneRenderManager::initWithFrameSink(group.playback, std::move(frameSink),
                                                            std::move(soundSink), driverSettings(group));
    manager_->setExportPauseSeconds(0);
    manager_->setFrameRenderingCompleteBlock([shared = shared_](int64_t) { shared->countFrame(); });
    player_ = QVMediaManage::initWithRenderManager(manager_, false);
    player_->setIsRec(true);
    player_->setOnSceneGroupRenderingCompleteBlock([shared = shared_] {
        shared->isComplete = true;
        wakeMainThread();
    });
    player_->setOnSceneGroupRenderingFailedBlock(
        [shared = shared_](const Error& error) { shared->fail(error); });
}

GroupRun::~GroupRun() = default;

/// A template's own shaders, whose names are paths, are reported by their nodes; the program's own are not.
void GroupRun::finishShaderReport() {
    manager_->performOnRenderQueue([this] {
        for (const ShaderFailure& failure : manager_->painter().shaders().failures())
            if (!failure.shader.starts_with('/'))
                group_.playback->report().add(
                    {.what = "shader failed", .name = failure.shader, .scene = {}, .node = {}});
    });
}

void GroupRun::askPainter() {
    manager_->performOnRenderQueue([this] {
        drawnBy_ = {manager_->painter().name(), manager_->painter().device()};
    });
}

void GroupRun::setSampler(std::function<void(int64_t, const RenderDriver&)> sampler) {
    manager_->setFrameSampleBlock(
        [sampler = std::move(sampler), driver = manager_.get()](int64_t frame) { sampler(frame, *driver); });
}

int64_t GroupRun::play() {
    startSeconds_ = platform::monotonicSeconds();
    if (!stop_.stop_requested()) player_->loadSceneGroup(group_.group);
    waitFor([this] { return isOver(); });
    if (const auto error = shared_->failure()) throw Error(*error);
    if (!shared_->isComplete) cancel();
    finishShaderReport();
    askPainter();
    reportProgress();
    return framesDone();
}

/// The render queue may go on for a moment after the last frame that is wanted.
int64_t GroupRun::framesDone() const { return std::min<int64_t>(shared_->frames, shared_->frameLimit); }

bool GroupRun::isOver() {
    return shared_->isComplete || shared_->frames >= shared_->frameLimit || shared_->failure();
}

void GroupRun::waitFor(const std::function<bool()>& isDone) {
    DispatchQueue::main().pumpUntil([&] {
        const double now = platform::monotonicSeconds();
        if (now - reportedSeconds_ >= kReportInterval) reportProgress();
        return stop_.stop_requested() || isDone();
    });
    if (!stop_.stop_requested()) return;
    cancel();
    throw Error(ErrorKind::Cancelled, "cancelled");
}

void GroupRun::cancel() {
    const auto isDown = std::make_shared<std::atomic<bool>>(false);
    player_->cancelRun([isDown] {
        *isDown = true;
        wakeMainThread();
    });
    DispatchQueue::main().pumpUntil([&] { return isDown->load(); });
}

void GroupRun::reportProgress() {
    JobProgress progress;
    progress.frame = framesDone();
    progress.totalFrames = group_.totalFrames;
    reportedSeconds_ = platform::monotonicSeconds();
    const double elapsed = reportedSeconds_ - startSeconds_;
    if (elapsed > 0) progress.framesPerSecond = static_cast<double>(progress.frame) / elapsed;
    if (progress.totalFrames > 0 && progress.framesPerSecond > 0)
        progress.secondsRemaining =
            static_cast<double>(progress.totalFrames - progress.frame) / progress.framesPerSecond;
    observer_.jobProgress(progress);
}

}  // namespace multiscene
