#include "platform/base/FileGate.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "platform/base/Activity.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

bool isBelow(const fs::path& path, const fs::path& folder) {
    const auto mismatch = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return mismatch.first == folder.end() && mismatch.second != path.end();
}

fs::path realPathOf(const FileHandle& file) {
    std::error_code failure;
    return fs::read_symlink(file.path(), failure);
}

/// Empty when there is no such file. Throws Error when that cannot be told.
fs::path realPath(const fs::path& path) {
    std::error_code failure;
    fs::path real = fs::canonical(path, failure);
    if (isPassing(failure.value())) throw errnoError(failure.value(), "cannot be looked at", path.string());
    return failure ? fs::path() : real;
}

FileGate::Verdict verdictOfErrno(int errnoValue, const fs::path& file) {
    switch (errnoValue) {
        case ENOENT:
        case ENOTDIR:
        case ELOOP:
        case ENAMETOOLONG:
        case EINVAL:
            return FileGate::Verdict::Missing;
        case ENXIO:  // a socket: it exists, but is no file
            return FileGate::Verdict::NotRegular;
        case EACCES:
        case EPERM:
            return FileGate::Verdict::Unreadable;
        default:
            throw errnoError(errnoValue, "cannot open", file.string());
    }
}

}  // namespace

void FileGate::allowFolder(const fs::path& folder) {
    const fs::path real = realPath(folder);
    if (real.empty()) return;
    const std::lock_guard lock(mutex_);
    folders_.push_back(real);
}

void FileGate::allowFile(const fs::path& file) {
    const fs::path real = realPath(file);
    if (real.empty()) return;
    const std::lock_guard lock(mutex_);
    files_.push_back(real);
}

void FileGate::allowAllOf(const FileGate& other) {
    const std::scoped_lock lock(mutex_, other.mutex_);
    folders_.insert(folders_.end(), other.folders_.begin(), other.folders_.end());
    files_.insert(files_.end(), other.files_.begin(), other.files_.end());
}

FileGate::Opened FileGate::open(const fs::path& file) {
    // Non-blocking, so that a FIFO in a template cannot hang the job before it is recognised.
    FileHandle handle = openFile(file, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    Verdict verdict = Verdict::Allowed;
    if (!handle) {
        verdict = verdictOfErrno(errno, file);
        // A process that is shut in cannot open what lies outside at all.
        if (verdict == Verdict::Unreadable) {
            const fs::path real = realPath(file);
            if (!real.empty() && !isAllowed(real)) verdict = Verdict::Outside;
        }
    } else {
        if (!isAllowed(realPathOf(handle)))
            verdict = Verdict::Outside;
        else if (!handle.isRegular())
            verdict = Verdict::NotRegular;
    }
    if (verdict == Verdict::Allowed) {
        activity::reading(file.string(),
                          isInput(realPathOf(handle)) ? ErrorKind::Input : ErrorKind::Template);
        return {verdict, std::move(handle)};
    }
    if (verdict != Verdict::Missing) remember(file.string(), verdict);
    return {verdict, FileHandle()};
}

std::vector<FileGate::Refusal> FileGate::refusals() const {
    const std::lock_guard lock(mutex_);
    return refusals_;
}

bool FileGate::isInput(const fs::path& realPath) const {
    const std::lock_guard lock(mutex_);
    return std::find(files_.begin(), files_.end(), realPath) != files_.end();
}

bool FileGate::isAllowed(const fs::path& realPath) const {
    const std::lock_guard lock(mutex_);
    return std::find(files_.begin(), files_.end(), realPath) != files_.end() ||
           std::any_of(folders_.begin(), folders_.end(),
                       [&](const fs::path& folder) { return isBelow(realPath, folder); });
}

void FileGate::remember(const std::string& path, Verdict verdict) {
    const std::lock_guard lock(mutex_);
    const bool known = std::any_of(refusals_.begin(), refusals_.end(),
                                   [&](const Refusal& refusal) { return refusal.path == path; });
    if (!known) refusals_.push_back({path, verdict});
}

const char* describe(FileGate::Verdict verdict) {
    switch (verdict) {
        case FileGate::Verdict::Allowed:
            return "may be opened";
        case FileGate::Verdict::Missing:
            return "does not exist";
        case FileGate::Verdict::Outside:
            return "lies outside the template's folder";
        case FileGate::Verdict::NotRegular:
            return "is not a regular file";
        case FileGate::Verdict::Unreadable:
            return "may not be read";
    }
    return "";
}

}  // namespace platform
