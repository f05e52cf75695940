// Jobs while they run: a child program each.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/DispatchQueue.h"
#include "studio/StudioSettings.h"
#include "studio/jobs/Job.h"
#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// What became of a run.
struct RunEnd {
    enum class Kind {
        Done,
        Failed,       ///< and would fail again
        Cancelled,    ///< as it was asked to be
        Interrupted,  ///< by a signal, or a fault that may pass
    };
    Kind kind = Kind::Failed;
    std::string cause;             ///< causeOf() its program's end
    platform::Value problem;       ///< of one that was not done
    platform::Value summary;       ///< of one that was: its last words
    std::filesystem::path folder;  ///< with what it has made; removed when this call returns
};

/// Gives each job a folder of its own (its inputs, what it makes), which is new for every attempt: what is
/// left of a run that nobody knows any more can publish nothing. Studio queue.
class JobRunner {
  public:
    struct Listener {
        std::function<void(const std::string& id, const Progress& progress)> progressed;
        std::function<void(const std::string& id, const RunEnd& end)> ended;
    };
    /// Names of the files in a job's folder.
    static constexpr const char *kVideo = "video.mp4", *kPoster = "pictures/poster.jpg",
                                *kPicture = "pictures/picture.jpg";

    JobRunner(platform::DispatchQueue& queue, const StudioSettings& settings, std::filesystem::path folder,
              Listener listener);
    /// As stop().
    ~JobRunner();

    /// Makes a video of these words of "make" and this list of inputs.
    void make(const Job& job, std::vector<std::string> words, const platform::Value& media);
    /// Installs a template, or asks what is offered.
    void changeCatalogue(const Job& job);
    /// Does nothing to one that does not run.
    void cancel(const std::string& id);
    /// Ends all, and waits for that; none of them is told of any more.
    void stop();

    std::size_t running(bool areDrawn) const;
    bool isRunning(const std::string& id) const { return runs_.contains(id); }
    /// Where the picture of the frame that is being drawn lies, if it is there; empty: the job does not run.
    std::filesystem::path pictureOf(const std::string& id) const;

  private:
    struct Run {
        bool isDrawn = false, isCancelled = false;
        Progress progress;
        platform::Value summary;
        std::filesystem::path folder;
        std::unique_ptr<ChildProgram> child;
    };

    void start(const Job& job, std::vector<std::string> words, std::filesystem::path folder);
    std::filesystem::path makeFolder(const Job& job) const;
    void hear(const std::string& id, const platform::Value& line);
    void end(const std::string& id, const ChildProgram::End& end);

    platform::DispatchQueue& queue_;
    const StudioSettings& settings_;
    const std::filesystem::path folder_;
    Listener listener_;
    std::map<std::string, Run> runs_;
};

}  // namespace multiscene::studio
