#include "platform/base/PartFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/base/PartFile.h"

namespace platform {

namespace fs = std::filesystem;

PartFolder::PartFolder(const fs::path& parent, const std::string& purpose)
    : path_(partName(parent / purpose)) {
    if (::mkdir(path_.c_str(), 0777) != 0)
        throw errnoError(errno, "cannot create the folder", path_.string());
    lock_ = openFile(path_, O_RDONLY | O_DIRECTORY);
    if (lock_) (void)::flock(lock_.descriptor(), LOCK_EX | LOCK_NB);
}

PartFolder::~PartFolder() {
    std::error_code ignored;
    if (!isLeft_) fs::remove_all(path_, ignored);
}

}  // namespace platform
