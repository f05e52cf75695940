#include "platform/fence/Landlock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "platform/base/File.h"

namespace platform {

namespace {

// The kernel's interface, written down here because the headers of many a system know an old version only.
constexpr uint64_t kExecute = 1 << 0, kWriteFile = 1 << 1, kReadFile = 1 << 2, kReadDir = 1 << 3,
                   kRemoveDir = 1 << 4, kRemoveFile = 1 << 5, kMakeDir = 1 << 7, kMakeRegular = 1 << 8,
                   kRefer = 1 << 13, kTruncate = 1 << 14, kIoctlDevice = 1 << 15;
constexpr uint64_t kFirstRights = (1 << 13) - 1;
constexpr uint64_t kTcpBind = 1, kTcpConnect = 2, kScopes = 3;
constexpr uint32_t kVersionFlag = 1;
constexpr int kRuleBelowPath = 1;

struct RulesetAttributes {
    uint64_t files, network, scopes;
};

struct [[gnu::packed]] PathAttributes {
    uint64_t allowed;
    int32_t parent;
};

uint64_t fileRights(int version) {
    uint64_t rights = kFirstRights;
    if (version >= 2) rights |= kRefer;
    if (version >= 3) rights |= kTruncate;
    if (version >= 5) rights |= kIoctlDevice;
    return rights;
}

constexpr uint64_t kReading = kExecute | kReadFile | kReadDir;
constexpr uint64_t kWriting =
    kReading | kWriteFile | kRemoveDir | kRemoveFile | kMakeDir | kMakeRegular | kRefer | kTruncate;
constexpr uint64_t kDevice = kReadFile | kReadDir | kWriteFile | kIoctlDevice;
constexpr uint64_t kOfFiles = kExecute | kWriteFile | kReadFile | kTruncate | kIoctlDevice;

void allow(int ruleset, const std::filesystem::path& path, uint64_t rights) {
    const FileHandle place = openFile(path, O_PATH);
    struct stat info {};
    if (!place || ::fstat(place.descriptor(), &info) != 0) {
        // A path that is left out cannot be opened later, and its file would be blamed for that.
        if (isPassing(errno)) throw errnoError(errno, "cannot be opened", path.string());
        return;
    }
    if (!S_ISDIR(info.st_mode)) rights &= kOfFiles;
    const PathAttributes attributes{rights, place.descriptor()};
    ::syscall(SYS_landlock_add_rule, ruleset, kRuleBelowPath, &attributes, 0);
}

/// Older kernels know shorter attributes.
size_t sizeOfAttributes(int version) {
    if (version >= 6) return sizeof(RulesetAttributes);
    return version >= 4 ? 2 * sizeof(uint64_t) : sizeof(uint64_t);
}

std::string olderThan(int version) {
    return version < 3 ? "this kernel's Landlock is old: files elsewhere could be shortened" : "";
}

}  // namespace

void Reach::add(const Reach& other) {
    read.insert(read.end(), other.read.begin(), other.read.end());
    write.insert(write.end(), other.write.begin(), other.write.end());
    devices.insert(devices.end(), other.devices.begin(), other.devices.end());
    network = network || other.network;
    attributes = attributes || other.attributes;
}

int landlockVersion() {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, size_t{0}, kVersionFlag);
    return version > 0 ? static_cast<int>(version) : 0;
}

std::string confineWithLandlock(const Reach& reach) {
    const int version = landlockVersion();
    if (version == 0) return "this kernel has no Landlock: every file of the user can be reached";
    // Without moving between folders no finished file could leave the folder it was made in.
    if (version < 2) return "this kernel's Landlock is too old: every file of the user can be reached";
    const uint64_t rights = fileRights(version);
    const RulesetAttributes attributes{rights, reach.network ? kTcpBind : kTcpBind | kTcpConnect, kScopes};
    const FileHandle ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeOfAttributes(version), 0)));
    if (!ruleset) return std::string("Landlock refuses its rules: ") + std::strerror(errno);
    for (const auto& path : reach.read) allow(ruleset.descriptor(), path, kReading & rights);
    for (const auto& path : reach.write) allow(ruleset.descriptor(), path, kWriting & rights);
    for (const auto& path : reach.devices) allow(ruleset.descriptor(), path, kDevice & rights);
    if (::syscall(SYS_landlock_restrict_self, ruleset.descriptor(), 0) != 0)
        return std::string("Landlock cannot be entered: ") + std::strerror(errno);
    return olderThan(version);
}

}  // namespace platform
