#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base/File.h"

namespace platform {

/// Memory that two processes see. Its size is sealed: nobody can pull it away from under the other.
/// Move-only.
class SharedMemory {
  public:
    SharedMemory() = default;
    /// New memory, all zeros, to be written here. Throws Error.
    explicit SharedMemory(size_t bytes);
    /// Memory that another process has made, to be read only. Throws Error(Failed) when it is smaller than
    /// `bytes` or could become so.
    SharedMemory(const FileHandle& file, size_t bytes);
    SharedMemory(SharedMemory&& other) noexcept;
    SharedMemory& operator=(SharedMemory&& other) noexcept;
    ~SharedMemory();

    uint8_t* data() const { return data_; }
    size_t size() const { return size_; }
    /// What the other process is given; of memory that was made here.
    FileHandle file() const;

  private:
    void map(int descriptor, int protection);

    FileHandle file_;
    uint8_t* data_ = nullptr;
    size_t size_ = 0;
};

}  // namespace platform
