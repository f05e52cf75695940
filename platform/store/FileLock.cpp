#include "platform/store/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace platform {

std::optional<FileLock> FileLock::acquire(const std::filesystem::path& file,
                                          std::chrono::milliseconds patience, Mode mode,
                                          const std::function<bool()>& isCancelled) {
    FileHandle handle = openFile(file, O_RDWR | O_CREAT | O_NOFOLLOW);
    if (const int failure = errno; !handle && mode == Mode::Shared) {
        handle = openFile(file, O_RDONLY | O_NOFOLLOW);
        if (!isPassing(errno)) errno = failure;
    }
    if (!handle) throw errnoError(errno, "cannot open the lock file", file.string());
    const auto deadline = std::chrono::steady_clock::now() + patience;
    const int kind = mode == Mode::Shared ? LOCK_SH : LOCK_EX;
    while (::flock(handle.descriptor(), kind | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) throw errnoError(errno, "cannot lock", file.string());
        if (std::chrono::steady_clock::now() >= deadline) return std::nullopt;
        if (isCancelled && isCancelled()) throw Error(ErrorKind::Cancelled, "cancelled");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return FileLock(std::move(handle));
}

}  // namespace platform
