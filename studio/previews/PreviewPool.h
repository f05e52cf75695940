#pragma once

#include <map>
#include <memory>
#include <string>

#include "studio/metrics/Counters.h"
#include "studio/previews/PreviewSession.h"

namespace multiscene::studio {

/// The previews that are open, of which a few have a program at a time: those that were used last. Studio
/// queue.
class PreviewPool {
  public:
    PreviewPool(const Parts& parts, UploadStore& uploads, Counters& counters);
    ~PreviewPool();
    PreviewPool(const PreviewPool&) = delete;
    PreviewPool& operator=(const PreviewPool&) = delete;

    /// The one that was not used for longest goes when there are too many.
    PreviewSession& add(const std::string& session, const TemplateFacts& facts, int64_t width);
    /// A session's own, which is going to be asked something; none when it is not there any more.
    PreviewSession* use(const std::string& id, const std::string& session);
    /// The same, which is only looked at.
    const PreviewSession* find(const std::string& id, const std::string& session) const;
    void remove(const std::string& id);
    /// Somebody may open one soon.
    void startAhead();
    /// Ends all, and waits for that.
    void stop();
    size_t programs() const;

  private:
    using Sessions = std::map<std::string, std::unique_ptr<PreviewSession>>;

    /// What tells a version of a template from another.
    static std::string versionOf(const TemplateFacts& facts);
    void makeRoomForProgram(const PreviewSession* except);
    Sessions::iterator leastUsed(const std::function<bool(const PreviewSession&)>& counts);
    std::chrono::seconds idle() const { return std::chrono::seconds(parts_.settings.limits.previewSeconds); }
    void removeIdle();
    void remove(Sessions::iterator session);
    /// One that was started ahead, and starts the next.
    std::unique_ptr<HeldProgram> takeProgram();
    void letGo(std::unique_ptr<HeldProgram> program);
    void watch();

    const Parts parts_;
    UploadStore& uploads_;
    Counters& counters_;
    const size_t mostPrograms_;
    Sessions sessions_;
    std::unique_ptr<HeldProgram> ahead_;
    PreviewSession::Clock::time_point aheadSince_;
    bool isStopped_ = false;
    std::map<const HeldProgram*, std::unique_ptr<HeldProgram>> leaving_;
    std::map<std::string, PreviewSession::Moments> moments_;  ///< by versions of templates
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace multiscene::studio
