// Plays one prepared scene group on the render queue while the main thread pumps the main queue.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>

#include "app/job/DrawnBy.h"
#include "app/job/JobObserver.h"
#include "app/job/PreparedGroup.h"
#include "platform/base/Clock.h"
#include "platform/base/Error.h"
#include "videoRenderCore/QVMediaManage.h"

namespace multiscene {

/// Main thread only. One object plays once; the group and the observer outlive it.
class GroupRun {
  public:
    /// Makes what draws. Either sink may be none. Throws platform::Error.
    GroupRun(const PreparedGroup& group, std::shared_ptr<FrameSink> frameSink,
             std::shared_ptr<SoundSink> soundSink, JobObserver& observer, std::stop_token stop);
    ~GroupRun();

    /// Called on the render queue in each frame with its number, before it is drawn. Before play().
    void setSampler(std::function<void(int64_t frame, const RenderDriver&)> sampler);
    /// Ends the run after this many frames instead of at the group's end. Before play().
    void setFrameLimit(int64_t frames) { shared_->frameLimit = frames; }

    /// Plays the group and returns the number of frames rendered. Throws platform::Error: what ended the run,
    /// or Cancelled when a stop was requested.
    int64_t play();

    /// Pumps the main queue until `isDone`; throws Cancelled, with the export given up, when a stop is
    /// requested before. For work that follows the frames.
    void waitFor(const std::function<bool()>& isDone);

    /// After play().
    const FrameStatistics& statistics() const { return manager_->statistics(); }
    const DrawnBy& drawnBy() const { return drawnBy_; }

  private:
    /// What the render queue tells; callbacks may outlive the run.
    struct Shared {
        std::atomic<int64_t> frames{0};
        int64_t frameLimit = INT64_MAX;
        std::atomic<bool> isComplete{false};
        std::mutex mutex;
        std::optional<platform::Error> error;

        void countFrame();
        void fail(const platform::Error& failure);
        std::optional<platform::Error> failure();
    };

    bool isOver();
    int64_t framesDone() const;
    void cancel();
    void reportProgress();
    void finishShaderReport();
    void askPainter();

    const PreparedGroup& group_;
    JobObserver& observer_;
    std::stop_token stop_;
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<QVMultiSceneRenderManager> manager_;
    std::shared_ptr<QVMediaManage> player_;
    DrawnBy drawnBy_;
    double startSeconds_ = 0, reportedSeconds_ = 0;
};

}  // namespace multiscene
