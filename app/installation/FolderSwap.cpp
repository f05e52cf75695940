#include "app/installation/FolderSwap.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "platform/base/File.h"

namespace multiscene {

namespace fs = std::filesystem;

namespace {

/// Of the path itself, links not followed; nothing when there is none. Throws Error when that cannot be told.
std::optional<struct stat> lookAt(const fs::path& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) == 0) return info;
    if (errno != ENOENT && errno != ENOTDIR)
        throw platform::errnoError(errno, "cannot be looked at", path.string());
    return std::nullopt;
}

bool isThere(const fs::path& path) { return lookAt(path).has_value(); }

void move(const fs::path& from, const fs::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        throw platform::errnoError(errno, "cannot move to " + to.string(), from.string());
}

/// Where the first folder waits while the second takes its place.
fs::path parkingPlace(const fs::path& other) { return other.string() + ".swap"; }

bool exchangeInOneStep(const fs::path& folder, const fs::path& other) {
    if (::renameat2(AT_FDCWD, folder.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0) return true;
    if (errno == EINVAL || errno == ENOSYS || errno == ENOTSUP) return false;
    throw platform::errnoError(errno, "cannot exchange with " + other.string(), folder.string());
}

}  // namespace

void swapFolders(const fs::path& folder, const fs::path& other, SwapMethod method) {
    const bool hasFolder = isThere(folder), hasOther = isThere(other);
    if (!hasFolder && hasOther) return move(other, folder);
    if (hasFolder && !hasOther) return move(folder, other);
    if (!hasFolder) return;
    if (method == SwapMethod::InOneStep && exchangeInOneStep(folder, other)) return;
    move(folder, parkingPlace(other));
    move(other, folder);
    move(parkingPlace(other), other);
}

void settleSwap(const fs::path& folder, const fs::path& other) {
    const fs::path parked = parkingPlace(other);
    if (isThere(parked)) move(parked, isThere(folder) ? other : folder);
}

std::string folderIdentity(const fs::path& folder) {
    const auto info = lookAt(folder);
    if (!info || !S_ISDIR(info->st_mode)) return {};
    return std::to_string(info->st_dev) + ":" + std::to_string(info->st_ino);
}

void syncFolder(const fs::path& folder) {
    const platform::FileHandle handle = platform::openFile(folder, O_RDONLY | O_DIRECTORY);
    if (handle) (void)::fsync(handle.descriptor());
}

void syncFilesBelow(const fs::path& folder) {
    const platform::FileHandle handle = platform::openFile(folder, O_RDONLY | O_DIRECTORY);
    if (!handle) throw platform::errnoError(errno, "cannot open the folder", folder.string());
    // The whole file system at once: a wait for each of ten thousand files takes seconds.
    if (::syncfs(handle.descriptor()) != 0 && errno != EINVAL && errno != ENOSYS)
        throw platform::errnoError(errno, "cannot write", folder.string());
}

}  // namespace multiscene
