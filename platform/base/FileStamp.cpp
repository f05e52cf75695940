#include "platform/base/FileStamp.h"

#include <algorithm>
#include <ctime>

namespace platform {

namespace {

constexpr int64_t kSecond = 1'000'000'000;
constexpr int64_t kTick = kSecond / 20;  // file times may be as coarse as that

int64_t nanoseconds(const timespec& time) { return time.tv_sec * kSecond + time.tv_nsec; }

}  // namespace

std::optional<FileStamp> FileStamp::of(const FileHandle& file) {
    struct stat info {};
    timespec now{};
    if (::fstat(file.descriptor(), &info) != 0 || ::clock_gettime(CLOCK_REALTIME, &now) != 0)
        return std::nullopt;
    const int64_t modified = nanoseconds(info.st_mtim), changed = nanoseconds(info.st_ctim);
    if (nanoseconds(now) - std::max(modified, changed) < kTick) return std::nullopt;
    return FileStamp{info.st_dev, info.st_ino, info.st_size, modified, changed};
}

}  // namespace platform
