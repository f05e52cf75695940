// What becomes of a job between being asked for and its end.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "studio/Parts.h"
#include "studio/events/EventHub.h"
#include "studio/jobs/Job.h"
#include "studio/jobs/JobRunner.h"
#include "studio/jobs/JobStore.h"
#include "studio/jobs/TemplateFacts.h"
#include "studio/metrics/Counters.h"
#include "studio/uploads/UploadStore.h"
#include "studio/videos/VideoStore.h"

namespace multiscene::studio {

/// Starts the next job when there is room, moves each from state to state, tells pages of it. What the disk
/// has is what holds: a studio that is killed at any moment goes on at its next start, and no job is made
/// twice or lost.
///
/// A job that was interrupted is tried again, at most twice more; when it was the studio that was killed,
/// which says little of the job, many times more, but not for ever. Studio queue.
class JobQueue {
  public:
    static constexpr int kMostDeaths = 20;

    struct Stores {
        JobStore& jobs;
        UploadStore& uploads;
        VideoStore& videos;
    };
    JobQueue(const Parts& parts, const Stores& stores, EventHub& events, Counters& counters,
             FindTemplate findTemplate);

    /// At the start: jobs that ran wait again, and what nobody knows is removed. Then begins.
    void recover();
    /// Puts the jobs that run back, and ends them. Nothing begins any more.
    void stop();

    /// Throws Problem: 429 when too many wait already, 422 when it would take hours. Gives the job an id.
    Job submit(Job job, const std::vector<std::string>& uploads);
    /// False when it has ended.
    bool cancel(const Job& job);

    /// As the API shows it.
    platform::Value show(const Job& job);
    /// From 1 on; 0 when it does not wait.
    int64_t placeOf(const Job& job);
    /// How many wait or run before one that would be asked for now.
    int64_t nextPlace(const std::string& session);
    /// Milliseconds that so many frames of so many pixels of a template are expected to take.
    int64_t estimate(int64_t templateId, int64_t frames, int64_t pixels);
    std::filesystem::path pictureOf(const std::string& id) const { return runner_.pictureOf(id); }
    std::size_t running(bool areDrawn) const { return runner_.running(areDrawn); }

    /// Called after each end of a job.
    void addListener(std::function<void(const Job&, const platform::Value& summary)> listener) {
        listeners_.push_back(std::move(listener));
    }

    /// Removes what has expired; again every minute.
    void removeExpired();
    /// Done ones whose video is gone are expired, and pages hear of it.
    void expireThoseWithoutVideo();

  private:
    void next();
    void putBackLost();
    void wakeWhenDue();
    bool startNext(bool areDrawn);
    void start(const Job& job);
    void hear(const std::string& id, const Progress& progress);
    void end(const std::string& id, const RunEnd& end);
    void countStage(const std::string& id, bool goesOn);
    void complete(const Job& job, const RunEnd& end);
    void interrupted(const Job& job, const platform::Value& problem);
    void finish(const Job& job, JobState state, const platform::Value& problem,
                const platform::Value& summary);
    void ended(const std::string& id, const platform::Value& summary);
    void tell(const Job& job);
    void tellPlaces();
    void requireRoom(const Job& job);
    void recover(const Job& job);
    void removeLeft() const;
    void guarded(const std::function<void()>& work);

    const Parts parts_;
    Stores stores_;
    EventHub& events_;
    Counters& counters_;
    FindTemplate findTemplate_;
    JobRunner runner_;
    const std::size_t workers_;
    int64_t wakesAt_ = 0;
    bool isStopped_ = false;
    bool isShaken_ = false;  ///< something could not be written down
    std::map<std::string, Progress> progress_;
    std::map<std::string, int64_t> places_, toldAt_, stageSince_;
    std::vector<std::function<void(const Job&, const platform::Value&)>> listeners_;
};

}  // namespace multiscene::studio
