// A command whose work is one piece, done by one worker behind the fence.
#pragma once

#include <filesystem>
#include <functional>

#include "cli/Command.h"
#include "cli/FencedWork.h"

namespace multiscene::cli {

/// The program prepares and publishes, the worker does what lies between. Nothing that prepare() leaves in
/// the object after the worker has started reaches the worker, and nothing that work() leaves in it comes
/// back.
class FencedCommand : public Command {
  public:
    int execute(Console& console, const JobSettings& settings) final;

  protected:
    /// Whether the work needs a folder for what it makes. Without one nothing is written.
    virtual bool needsFolder() const { return true; }
    /// In the program: judges the outputs that the user named, and has the results made in `folder`. Throws
    /// platform::Error.
    virtual Errand prepare(const std::filesystem::path& folder) = 0;
    /// In the worker: the work. `publish` has the program call publish(), and throws what that throws.
    virtual int work(Console& console, std::stop_token stop, const std::function<void()>& publish) = 0;
    /// In the program, once: the results, which lie in the folder, take the places that the user named. The
    /// worker has made them: they may be anything. Throws platform::Error.
    virtual void publish() {}

    /// In the program, for what takes long in prepare() and publish(): whether a signal has come.
    std::function<bool()> cancelling() const {
        return [this] { return fenced_->isCancelled(); };
    }
    /// In the worker, before it publishes: the disk has these files, or the files in this folder, so that the
    /// program need not wait for it. Throws platform::Error.
    static void flush(const std::filesystem::path& made);

  private:
    const FencedWork* fenced_ = nullptr;
};

}  // namespace multiscene::cli
