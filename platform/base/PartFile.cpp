#include "platform/base/PartFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "platform/base/Paths.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr size_t kKeptName = 100;  // bytes; the whole name has to stay below 256
constexpr std::string_view kExtension = ".part";

/// Whether the name is one of partName(): it ends in an identifier and the extension.
bool isHiddenName(std::string_view name) {
    constexpr size_t randomDigits = 16;
    if (!name.starts_with('.') || !name.ends_with(kExtension)) return false;
    name.remove_suffix(kExtension.size());
    const std::string_view identifier = name.substr(name.rfind('.') + 1);
    const size_t dash = identifier.find('-');
    return dash != std::string_view::npos && dash > 0 && identifier.size() == dash + 1 + randomDigits &&
           identifier.find_first_not_of("0123456789") == dash &&
           identifier.find_first_not_of("0123456789abcdef", dash + 1) == std::string_view::npos;
}

bool isLockedHere(const FileHandle& file) { return ::flock(file.descriptor(), LOCK_EX | LOCK_NB) == 0; }

/// Not removed by somebody who found it before it was locked.
bool hasItsName(const FileHandle& file) {
    struct stat info {};
    return ::fstat(file.descriptor(), &info) == 0 && info.st_nlink > 0;
}

}  // namespace

fs::path partName(const fs::path& target) {
    std::string name = target.filename().string();
    if (name.size() > kKeptName) {
        // Not within a character.
        size_t end = kKeptName;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end;
        name.resize(end);
    }
    return target.parent_path() / ("." + name + "." + uniqueIdentifier() + std::string(kExtension));
}

PartFile::PartFile(const fs::path& target) : target_(target) {
    if (!openWithoutName()) openLocked();
}

bool PartFile::openWithoutName() {
    const fs::path folder = target_.parent_path();
    file_ = openFile(folder.empty() ? "." : folder, O_WRONLY | O_TMPFILE);
    // What a file system without it answers; EISDIR is an old kernel's word.
    if (!file_ && errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
        throw errnoError(errno, "cannot write", target_.string());
    // It will have a name for a moment, and must not look abandoned then.
    if (file_) (void)isLockedHere(file_);
    return static_cast<bool>(file_);
}

void PartFile::openLocked() {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        hidden_ = partName(target_);
        file_ = openFile(hidden_, O_WRONLY | O_CREAT | O_EXCL);
        if (!file_) throw errnoError(errno, "cannot write", target_.string());
        // Where nothing can be locked, nothing is taken for abandoned either.
        if ((isLockedHere(file_) || errno != EWOULDBLOCK) && hasItsName(file_)) return;
    }
    throw Error(ErrorKind::Transient, "cannot write: another program removes what is written",
                target_.string());
}

PartFile::~PartFile() {
    if (!hidden_.empty()) ::unlink(hidden_.c_str());
}

void PartFile::publish() {
    flushToDisk(file_, target_.string());
    if (hidden_.empty()) {
        // A name can be given, but none replaced: so it is a hidden one for a moment.
        const fs::path name = partName(target_);
        if (::linkat(AT_FDCWD, file_.path().c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) != 0)
            throw errnoError(errno, "cannot write", target_.string());
        hidden_ = name;
    }
    if (::rename(hidden_.c_str(), target_.c_str()) != 0)
        throw errnoError(errno, "cannot write", target_.string());
    hidden_.clear();
}

void removeAbandonedParts(const fs::path& folder) {
    std::error_code failure;
    for (auto entry = fs::directory_iterator(folder, failure); !failure && entry != fs::end(entry);
         entry.increment(failure)) {
        if (!isHiddenName(entry->path().filename().string())) continue;
        const FileHandle file = openFile(entry->path(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
        struct stat info {};
        std::error_code ignored;
        if (file && ::fstat(file.descriptor(), &info) == 0 &&
            (S_ISREG(info.st_mode) || S_ISDIR(info.st_mode)) && isLockedHere(file))
            fs::remove_all(entry->path(), ignored);
    }
}

}  // namespace platform
