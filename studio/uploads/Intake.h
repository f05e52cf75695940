// What was uploaded becomes something that can be used: by a program of its own, as it may be anything.
#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "studio/Parts.h"
#include "studio/process/ChildProgram.h"
#include "studio/uploads/Upload.h"

namespace multiscene::studio {

/// Runs "intake" on files, a few at a time. Studio queue.
class Intake {
  public:
    /// The upload as it is now, or none and the exit code of the program, below 0 when it was killed.
    using Done = std::function<void(const std::optional<Upload>& upload, int exitCode)>;
    static constexpr const char* kOriginal = "original";  ///< the file as it came, in the upload's folder
    static constexpr const char* kProxy = "own/proxy.jpg";

    explicit Intake(const Parts& parts) : parts_(parts) {}

    /// `folder` is the upload's and holds the original.
    void take(const Upload& upload, const std::filesystem::path& folder, Done done);
    /// Ends all; nothing is called any more.
    void stop();
    /// Bytes of a session's that are being looked at.
    int64_t bytesOf(const std::string& session) const;

  private:
    struct Work {
        Upload upload;
        std::filesystem::path folder;
        Done done;
        platform::Value found;
        std::unique_ptr<ChildProgram> child;
    };

    void next();
    void start(Work work);
    void end(const std::string& id, const ChildProgram::End& end);
    static std::optional<Upload> judged(const Work& work);

    const Parts parts_;
    std::deque<Work> waiting_;
    std::map<std::string, Work> running_;
};

}  // namespace multiscene::studio
