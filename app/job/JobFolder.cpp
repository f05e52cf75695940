#include "app/job/JobFolder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <mutex>
#include <set>

#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Log.h"
#include "platform/base/Paths.h"
#include "platform/base/PrivateFolder.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::FileLock;

namespace {

constexpr const char* kLockName = ".lock";
constexpr std::chrono::seconds kPatience{30};
constexpr off_t kLeastRoom = 1 << 20;  // bytes

struct LivingFolders {
    std::mutex mutex;
    std::set<fs::path> paths;
};

LivingFolders& livingFolders() {
    static LivingFolders folders;
    return folders;
}

fs::path& nest() {
    static fs::path folder;
    return folder;
}

void removeTree(const fs::path& folder) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

/// Whoever lives holds the lock in its folder. Other jobs end meanwhile and take their folders away, and
/// another user's folder cannot be opened: a sweep that does not succeed is left to the next job.
void removeWhereAbandoned(const fs::path& folder) {
    try {
        const auto lock = FileLock::acquire(folder / kLockName);
        if (lock) removeTree(folder);
    } catch (const Error& failure) {
        platform::log::info(std::string("not swept: ") + failure.what());
    }
}

void sweep(const fs::path& jobs) {
    std::error_code failure;
    for (fs::directory_iterator entry(jobs, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        std::error_code gone;
        if (entry->is_directory(gone) && !entry->is_symlink(gone)) removeWhereAbandoned(entry->path());
    }
}

/// On a full disk folders and empty files can still be made.
void requireRoom(const fs::path& folder) {
    const fs::path probe = folder / ".room";
    const platform::FileHandle file(::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    const int failure = file ? ::posix_fallocate(file.descriptor(), 0, kLeastRoom) : errno;
    ::unlink(probe.c_str());
    if (failure != 0) throw platform::errnoError(failure, "cannot write", folder.string());
}

}  // namespace

JobFolder::JobFolder(const std::function<bool()>& isCancelled) {
    if (nest().empty()) {
        make(isCancelled);
    } else {
        path_ = nest() / platform::uniqueIdentifier();
        platform::makePrivateFolder(path_);
    }
    const std::lock_guard guard(livingFolders().mutex);
    livingFolders().paths.insert(path_);
}

void JobFolder::make(const std::function<bool()>& isCancelled) {
    try {
        makeIn(platform::dataHome(), isCancelled);
    } catch (const Error& failure) {
        if (failure.kind() == platform::ErrorKind::Cancelled) throw;
        platform::log::info(std::string("the job uses the temporary folder: ") + failure.what());
        try {
            makeIn(platform::privateTemporaryFolder(), isCancelled);
        } catch (const Error& second) {
            if (second.kind() == platform::ErrorKind::Cancelled) throw;
            throw Error(failure);  // the data home is what a user can do something about
        }
    }
}

void JobFolder::nestIn(const fs::path& folder) { nest() = folder; }

void JobFolder::makeIn(const fs::path& home, const std::function<bool()>& isCancelled) {
    const fs::path jobs = home / "jobs";
    platform::createFolders(jobs);
    // A folder without its lock looks abandoned, so making and sweeping exclude each other.
    const auto turn = FileLock::acquire(jobs / kLockName, kPatience, FileLock::Mode::Alone, isCancelled);
    if (!turn)
        throw Error(platform::ErrorKind::Transient, "another program keeps the jobs locked", jobs.string());
    sweep(jobs);
    path_ = jobs / platform::uniqueIdentifier();
    platform::makePrivateFolder(path_);
    try {
        lock_ = FileLock::acquire(path_ / kLockName);
        requireRoom(path_);
    } catch (...) {
        removeTree(path_);
        throw;
    }
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
