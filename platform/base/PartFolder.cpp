#include "platform/base/PartFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/base/PartFile.h"

namespace platform {

namespace fs = std::filesystem;

PartFolder::PartFolder(const fs::path& parent, const std::string& purpose) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        path_ = partName(parent / purpose);
        if (::mkdir(path_.c_str(), 0777) != 0)
            throw errnoError(errno, "cannot create the folder", (parent / purpose).string());
        lock_ = openFile(path_, O_RDONLY | O_DIRECTORY);
        // Somebody may have found it before it was locked, and takes it for abandoned.
        const bool isFree =
            !lock_ || ::flock(lock_.descriptor(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
        struct stat info {};
        if (isFree && (::lstat(path_.c_str(), &info) == 0 || errno != ENOENT)) return;
    }
    throw Error(ErrorKind::Transient, "cannot create the folder: another program removes what is made",
                parent.string());
}

PartFolder::~PartFolder() {
    std::error_code ignored;
    if (!isLeft_) fs::remove_all(path_, ignored);
}

}  // namespace platform
