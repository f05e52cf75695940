#include "app/Job/JobFolder.h"

#include <chrono>
#include <mutex>
#include <set>

#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Paths.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::FileLock;

namespace {

constexpr const char* kLockName = ".lock";
constexpr std::chrono::seconds kPatience{30};

fs::path jobsFolder() { return platform::dataHome() / "jobs"; }

struct LivingFolders {
    std::mutex mutex;
    std::set<fs::path> paths;
};

LivingFolders& livingFolders() {
    static LivingFolders folders;
    return folders;
}

void removeTree(const fs::path& folder) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

/// Whoever lives holds the lock in its folder.
void removeWhereAbandoned(const fs::path& folder) {
    const auto lock = FileLock::acquire(folder / kLockName);
    if (lock) removeTree(folder);
}

void sweep(const fs::path& jobs) {
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(jobs, failure))
        if (entry.is_directory(failure) && !entry.is_symlink(failure)) removeWhereAbandoned(entry.path());
}

}  // namespace

JobFolder::JobFolder() : path_(jobsFolder() / platform::uniqueIdentifier()) {
    platform::createFolders(jobsFolder());
    // A folder without its lock looks abandoned, so making and sweeping exclude each other.
    const auto turn = FileLock::acquire(jobsFolder() / kLockName, kPatience);
    if (!turn)
        throw platform::Error(platform::ErrorKind::Transient, "another program keeps the jobs locked",
                              jobsFolder().string());
    sweep(jobsFolder());
    platform::createFolders(path_);
    lock_ = FileLock::acquire(path_ / kLockName);
    const std::lock_guard guard(livingFolders().mutex);
    livingFolders().paths.insert(path_);
}

JobFolder::~JobFolder() {
    removeTree(path_);
    const std::lock_guard guard(livingFolders().mutex);
    livingFolders().paths.erase(path_);
}

void JobFolder::removeAllOfThisProcess() {
    const std::lock_guard guard(livingFolders().mutex);
    for (const fs::path& path : livingFolders().paths) removeTree(path);
}

}  // namespace multiscene
