// The jobs of all sessions, as the disk has them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/store/Database.h"
#include "studio/jobs/Job.h"
#include "studio/jobs/JobOrder.h"

namespace multiscene::studio {

/// What becomes of a job is one statement that also says which state it comes from: who comes too late
/// changes nothing, and is told so. Studio queue. Throws platform::Error.
class JobStore {
  public:
    /// Makes the tables that are missing.
    explicit JobStore(platform::Database& database);

    /// A new job that waits, with the uploads that it uses.
    void add(const Job& job, const std::vector<std::string>& uploads);
    std::optional<Job> find(const std::string& id);
    /// A session's, the newest first, older than the cursor (a job's id; empty: all). An unknown cursor gives
    /// none.
    std::vector<Job> list(const std::string& session, std::optional<JobState> state, int64_t most,
                          const std::string& cursor);
    /// All that have not ended.
    std::vector<Job> unended();

    /// The answer that was given to a request of this key, and a digest of that request.
    struct Remembered {
        std::string digest;
        platform::Value answer;
    };
    std::optional<Remembered> remembered(const std::string& session, const std::string& key);
    void remember(const std::string& session, const std::string& key, const Remembered& answer, int64_t now);

    /// Those that wait, in their order.
    std::vector<WaitingJob> waiting(bool areDrawn, int64_t now);
    struct Counts {
        int64_t ofAll = 0, ofSession = 0;
    };
    Counts countWaiting(const std::string& session);

    std::map<std::string, int64_t> countByState();

    /// queued -> running: the next one whose time has come; it is the session's turn. None: nothing to do.
    std::optional<Job> claim(bool areDrawn, int64_t now);
    /// When the next one's time will come that has not yet; none: there is none.
    std::optional<int64_t> nextDue(int64_t now);
    /// queued -> cancelled. False: it does not wait.
    bool cancelWaiting(const std::string& id, int64_t now);
    /// running -> cancelling.
    bool askToCancel(const std::string& id);
    /// running -> queued.
    bool putBack(const std::string& id, int64_t notBefore);
    /// The same after the studio's own end, which is no attempt. `wasKilled`: it had no time to say so.
    bool putBackUncounted(const std::string& id, bool wasKilled, int64_t notBefore = 0);
    /// running or cancelling -> failed or cancelled; running -> done.
    bool end(const std::string& id, JobState state, const platform::Value& problem, int64_t now);
    /// done -> expired: those whose video is gone. Returns their ids.
    std::vector<std::string> expire();

    /// Removes what ended before that time and has no video.
    void forgetBefore(int64_t time);
    void forgetAnswersBefore(int64_t time);

    /// Picoseconds that a pixel of a frame of the template takes; none: it was never made.
    std::optional<int64_t> measuredCost(int64_t templateId);
    void measure(int64_t templateId, int64_t picoseconds);

  private:
    std::map<std::string, int64_t> turns();

    platform::Database& database_;
};

}  // namespace multiscene::studio
