#include "platform/base/SharedMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace platform {

namespace {

constexpr int kFixed = F_SEAL_SHRINK | F_SEAL_GROW;

Error failure() { return errnoError(errno, "memory cannot be shared", ""); }

}  // namespace

SharedMemory::SharedMemory(size_t bytes)
    : file_(::memfd_create("multiscene", MFD_CLOEXEC | MFD_ALLOW_SEALING)), size_(bytes) {
    if (!file_ || ::ftruncate(file_.descriptor(), static_cast<off_t>(bytes)) != 0 ||
        ::fcntl(file_.descriptor(), F_ADD_SEALS, kFixed | F_SEAL_SEAL) != 0)
        throw failure();
    map(file_.descriptor(), PROT_READ | PROT_WRITE);
}

SharedMemory::SharedMemory(const FileHandle& file, size_t bytes) : size_(bytes) {
    const int seals = ::fcntl(file.descriptor(), F_GET_SEALS);
    if (seals < 0 || (seals & kFixed) != kFixed || file.size() < bytes)
        throw Error(ErrorKind::Failed, "memory is not shared as agreed");
    map(file.descriptor(), PROT_READ);
}

SharedMemory::SharedMemory(SharedMemory&& other) noexcept
    : file_(std::move(other.file_)),
      data_(std::exchange(other.data_, nullptr)),
      size_(std::exchange(other.size_, 0)) {}

SharedMemory& SharedMemory::operator=(SharedMemory&& other) noexcept {
    std::swap(file_, other.file_);
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
}

SharedMemory::~SharedMemory() {
    if (data_) ::munmap(data_, size_);
}

FileHandle SharedMemory::file() const {
    FileHandle copy(::fcntl(file_.descriptor(), F_DUPFD_CLOEXEC, 0));
    if (!copy) throw failure();
    return copy;
}

void SharedMemory::map(int descriptor, int protection) {
    void* const start = ::mmap(nullptr, size_, protection, MAP_SHARED, descriptor, 0);
    if (start == MAP_FAILED) throw failure();
    data_ = static_cast<uint8_t*>(start);
}

}  // namespace platform
