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
    /// Where the file lies at the moment; for messages.
    std::string name() const;
    /// Neither a folder nor a pipe nor anything else than a file. Throws Error.
    bool isRegular() const;
    /// Bytes in the file. Throws Error.
    uint64_t size() const;

  private:
    int descriptor_ = -1;
};

/// open(2), begun again when a signal interrupts it. Empty with errno set when it fails.
FileHandle openFile(const std::filesystem::path& file, int flags, unsigned mode = 0666);

/// Whether a file or a folder of that kind lies there, links followed. What cannot be told for a passing
/// fault is thrown as an Error(Transient): nobody should take a disk's fault for a missing file.
bool isThere(const std::filesystem::path& path);
bool isFile(const std::filesystem::path& path);
bool isFolder(const std::filesystem::path& path);

/// Reads `count` bytes from `offset` on, or as many as there are up to the end of the file, whatever the
/// system gives at a time. Returns their number; -1 with errno set when they cannot be read.
int64_t readAt(const FileHandle& file, void* bytes, uint64_t count, uint64_t offset);
/// Writes all of it at the file's position. Throws Error with `name` as its file.
void writeAll(const FileHandle& file, std::string_view bytes, const std::string& name);
/// Has the disk take what was written, before others learn of it. Throws Error with `name` as its file.
void flushToDisk(const FileHandle& file, const std::string& name);

/// The whole file. Throws Error(kind) naming the file when it cannot be read or holds more than `maxBytes`.
std::vector<uint8_t> readFile(const std::filesystem::path& file, uint64_t maxBytes,
                              ErrorKind kind = ErrorKind::Failed);
std::vector<uint8_t> readFile(const FileHandle& file, const std::string& name, uint64_t maxBytes,
                              ErrorKind kind = ErrorKind::Failed);

/// Writes beside the target, then renames over it. Throws Error; the old file is then untouched.
void writeFileAtomically(const std::filesystem::path& file, std::string_view bytes);

/// mkdir -p. Throws Error.
void createFolders(const std::filesystem::path& folder);

/// Moves a finished file to its final name once the disk has it, also across file systems (copied beside the
/// target, then renamed). Throws Error; the target is then untouched.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace platform
