// A lock between processes, tied to a file. The kernel lets go of it when its holder ends, however it ends.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>

#include "platform/base/File.h"

namespace platform {

/// Held while the object lives. Two holders in one process exclude each other too. The file itself stays.
class FileLock {
  public:
    /// Nothing when somebody else still holds it after `patience`. Throws Error when the file cannot be made;
    /// a shared lock only asks that it can be read; Cancelled when `isCancelled`, which is asked while it
    /// waits, says so.
    enum class Mode { Alone, Shared };
    static std::optional<FileLock> acquire(const std::filesystem::path& file,
                                           std::chrono::milliseconds patience = std::chrono::milliseconds(0),
                                           Mode mode = Mode::Alone,
                                           const std::function<bool()>& isCancelled = {});

  private:
    explicit FileLock(FileHandle file) : file_(std::move(file)) {}
    FileHandle file_;
};

}  // namespace platform
