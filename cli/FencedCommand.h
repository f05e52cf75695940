// A command whose work reads foreign files or compiles foreign shaders: it is done by a worker behind the
// fence.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "app/job/JobFolder.h"
#include "cli/Command.h"
#include "platform/fence/Landlock.h"

namespace multiscene::cli {

/// The program prepares and publishes, the worker does what lies between. Nothing that prepare() leaves in
/// the object after the worker has started reaches the worker, and nothing that work() leaves in it comes
/// back.
class FencedCommand : public Command {
  public:
    struct Errand {
        std::string source;     ///< named when the worker ends before it has opened anything
        platform::Reach reach;  ///< what the user named on the command line
        /// An installed template may be meant: what a killed installation left is put right first.
        bool usesCatalogue = false;
    };

    int execute(Console& console, const JobSettings& settings) final;

  protected:
    /// Whether the work needs a folder for what it makes. Without one nothing is written.
    virtual bool needsFolder() const { return true; }
    /// In the program: judges the outputs that the user named, and has the results made in `folder`. Throws
    /// platform::Error.
    virtual Errand prepare(const std::filesystem::path& folder) = 0;
    /// In the worker: the work. `publish` has the program call publish(), and throws what that throws.
    virtual int work(Console& console, std::stop_token stop, const std::function<void()>& publish) = 0;
    /// In the program: the results, which lie in the folder, take the places that the user named. The worker
    /// has made them: they may be anything. Throws platform::Error.
    virtual void publish() {}

  private:
    std::unique_ptr<JobFolder> jobFolder() const;
    int runUnfenced(Console& console);
    int runFenced(Console& console, const JobSettings& settings, int signals,
                  const std::filesystem::path& folder, const Errand& errand);
};

}  // namespace multiscene::cli
