// What was uploaded becomes something that can be used: by a program of its own, as it may be anything.
#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/PartFile.h"
#include "studio/Parts.h"
#include "studio/metrics/Counters.h"
#include "studio/process/ChildProgram.h"
#include "studio/uploads/Upload.h"

namespace multiscene::studio {

/// Keeps files and runs "intake" on them, a few at a time, of the sessions in turn. Studio queue.
class Intake {
  public:
    /// The upload as it is now, or none and the exit code of the program, below 0 when it was killed.
    using Done = std::function<void(const std::optional<Upload>& upload, int exitCode)>;
    static constexpr const char* kOriginal = "original";  ///< the file as it came, in the upload's folder
    static constexpr const char* kProxy = "own/proxy.jpg";

    Intake(const Parts& parts, Counters& counters);

    /// `folder` is the upload's and is made; `file` is the original, which is published when its turn comes.
    void take(const Upload& upload, const std::filesystem::path& folder,
              std::unique_ptr<platform::PartFile> file, Done done);
    /// Ends all; nothing is called any more.
    void stop();
    /// Bytes of a session's that are being looked at.
    int64_t bytesOf(const std::string& session) const;
    size_t countOf(const std::string& session) const;

  private:
    struct Work {
        Upload upload;
        std::filesystem::path folder;
        std::shared_ptr<platform::PartFile> file;
        Done done;
        platform::Value found;
        std::unique_ptr<ChildProgram> child;
    };

    void next();
    Work takeNext();
    void start(Work work);
    void look(const std::string& id);
    void end(const std::string& id, const ChildProgram::End& end);
    static std::optional<Upload> judged(const Work& work);

    const Parts parts_;
    Counters& counters_;
    std::deque<Work> waiting_;
    std::map<std::string, Work> running_;
    std::map<std::string, int64_t> turns_;  ///< by session, of those that wait
    int64_t turn_ = 0;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
    /// A disk takes its time, and others' requests do not wait for it.
    std::unique_ptr<platform::DispatchQueue> disk_;
};

}  // namespace multiscene::studio
