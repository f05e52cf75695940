// Plain file access with clear errors: an owned descriptor, whole-file reading, and writing that never leaves
// a half-written file under its final name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Error.h"

namespace platform {

/// Owns a file descriptor; move-only, empty is allowed.
class FileHandle {
  public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
    FileHandle(FileHandle&& other) noexcept : descriptor_(other.release()) {}
    FileHandle& operator=(FileHandle&& other) noexcept;
    ~FileHandle() { reset(); }

    int descriptor() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    int release();
    void reset();
    /// A path that opens this very file, whatever has happened to its name since. Valid while the handle is.
    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
    /// Bytes in the file.
    uint64_t size() const;

  private:
    int descriptor_ = -1;
};

/// The whole file. Throws Error(kind) naming the file when it cannot be read or holds more than `maxBytes`.
std::vector<uint8_t> readFile(const std::filesystem::path& file, uint64_t maxBytes,
                              ErrorKind kind = ErrorKind::Failed);
std::vector<uint8_t> readFile(const FileHandle& file, const std::string& name, uint64_t maxBytes,
                              ErrorKind kind = ErrorKind::Failed);

/// Writes beside the target, then renames over it. Throws Error; the old file is then untouched.
void writeFileAtomically(const std::filesystem::path& file, std::string_view bytes);

/// mkdir -p. Throws Error.
void createFolders(const std::filesystem::path& folder);

/// Moves a finished file to its final name, also across file systems (copied beside the target, then
/// renamed). Throws Error; the target is then untouched.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace platform
