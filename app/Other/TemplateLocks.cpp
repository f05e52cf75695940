#include "app/Other/TemplateLocks.h"

#include <filesystem>

#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileLock;

namespace {

std::filesystem::path lockFile(const std::string& fileName) {
    QVUtil::createMultiSceneLocalPaths();
    const std::filesystem::path folder = std::filesystem::path(QVUtil::dataPath()) / "locks";
    platform::createFolders(folder);
    return folder / fileName;
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

FileLock lockForUse(const std::string& name, std::chrono::milliseconds patience) {
    return useLock(name, patience, FileLock::Mode::Shared, "another program is changing this template");
}

FileLock lockForExchange(const std::string& name, std::chrono::milliseconds patience) {
    return useLock(name, patience, FileLock::Mode::Alone, "a video is being made with this template");
}

}  // namespace multiscene
