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
                 const char* refusal) {
    auto lock = FileLock::acquire(lockFile(name + ".use"), patience, mode);
    if (!lock) throw Error(ErrorKind::Transient, refusal, name);
    return std::move(*lock);
}

}  // namespace

std::optional<FileLock> lockForChange(const std::string& name, std::chrono::milliseconds patience) {
    return FileLock::acquire(lockFile(name + ".lock"), patience);
}

std::optional<FileLock> lockForUse(const std::string& name, std::chrono::milliseconds patience) {
    std::error_code failure;
    if (!canBeWritten(lockFolder()) && !std::filesystem::exists(lockFolder() / (name + ".use"), failure))
        return std::nullopt;
    return useLock(name, patience, FileLock::Mode::Shared, "another program is changing this template");
}

FileLock lockForExchange(const std::string& name, std::chrono::milliseconds patience) {
    return useLock(name, patience, FileLock::Mode::Alone, "a video is being made with this template");
}

}  // namespace multiscene
