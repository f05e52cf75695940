#include "platform/base/PrivateFolder.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>

#include "platform/base/File.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr const char* kRules = "system.posix_acl_default";

struct AclEntry {
    uint16_t tag, permissions;
    uint32_t id;
};
struct Acl {
    uint32_t version;
    std::array<AclEntry, 3> entries;
};

/// What is made in the folder: everything for the owner, nothing for group and others.
constexpr uint32_t kNobody = 0xffffffff;
constexpr Acl kOwnersAlone{2, {{{0x01, 7, kNobody}, {0x04, 0, kNobody}, {0x20, 0, kNobody}}}};

/// Reading it by umask() would change it for a moment under the other threads.
mode_t processMask() {
    constexpr mode_t usual = 022;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("Umask:")) return static_cast<mode_t>(std::stoul(line.substr(6), nullptr, 8));
    return usual;
}

}  // namespace

void makePrivateFolder(const fs::path& folder) {
    if (::mkdir(folder.c_str(), 0700) != 0)
        throw errnoError(errno, "cannot create the folder", folder.string());
    (void)::setxattr(folder.c_str(), kRules, &kOwnersAlone, sizeof kOwnersAlone, 0);
}

fs::path privateTemporaryFolder() {
    std::error_code failure;
    const fs::path parent = fs::temp_directory_path(failure);
    if (failure) throw Error(ErrorKind::Failed, "there is no temporary folder");
    const fs::path folder = parent / ("multiscene-" + std::to_string(::geteuid()));
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        throw errnoError(errno, "cannot create the folder", folder.string());
    struct stat info {};
    const bool isOwn = ::lstat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
                       info.st_uid == ::geteuid() && (info.st_mode & 077) == 0;
    if (!isOwn) throw Error(ErrorKind::Failed, "is not a private folder of this user", folder.string());
    return folder;
}

void makeUsuallyReadable(const fs::path& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return;
    const bool isFolder = S_ISDIR(info.st_mode);
    if (isFolder) (void)::removexattr(path.c_str(), kRules);
    (void)::chmod(path.c_str(), (isFolder ? 0777 : 0666) & ~processMask());
}

}  // namespace platform
