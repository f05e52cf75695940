#include "app/installation/TemplateLocks.h"

#include <unistd.h>

#include <filesystem>

#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileLock;

namespace {

std::filesystem::path lockFolder() { return std::filesystem::path(QVUtil::dataPath()) / "locks"; }

std::filesystem::path lockFile(const std::string& fileName) {
    QVUtil::createMultiSceneLocalPaths();
    platform::createFolders(lockFolder());
    return lockFolder() / fileName;
}

bool canBeWritten(std::filesystem::path folder) {
    std::error_code failure;
    while (!std::filesystem::exists(folder, failure) && folder.has_relative_path())
        folder = folder.parent_path();
    return ::access(folder.c_str(), W_OK) == 0;
}

FileLock useLock(const std::string& name, std::chrono::milliseconds patience, FileLock::Mode mode,
                 const char* refusal, const std::function<bool()>& isCancelled = {}) {
    auto lock = FileLock::acquire(lockFile(name + ".use"), patience, mode, isCancelled);
    if (!lock) throw Error(ErrorKind::Transient, refusal, name);
    return std::move(*lock);
}

}  // namespace

std::optional<FileLock> lockForChange(const std::string& name, std::chrono::milliseconds patience,
                                      const std::function<bool()>& isCancelled) {
    return FileLock::acquire(lockFile(name + ".lock"), patience, FileLock::Mode::Alone, isCancelled);
}

std::optional<FileLock> lockForUse(const std::string& name, std::chrono::milliseconds patience) {
    std::error_code failure;
    if (!canBeWritten(lockFolder()) && !std::filesystem::exists(lockFolder() / (name + ".use"), failure))
        return std::nullopt;
    try {
        return useLock(name, patience, FileLock::Mode::Shared, "another program is changing this template");
    } catch (const Error&) {
        // A process that may only read finds the lock of every template that was ever exchanged.
        if (std::filesystem::exists(lockFolder() / (name + ".use"), failure)) throw;
        return std::nullopt;
    }
}

FileLock lockForExchange(const std::string& name, std::chrono::milliseconds patience,
                         const std::function<bool()>& isCancelled) {
    return useLock(name, patience, FileLock::Mode::Alone, "a video is being made with this template",
                   isCancelled);
}

}  // namespace multiscene
