#pragma once

#include <sys/stat.h>

#include <compare>
#include <cstdint>
#include <optional>

#include "platform/base/File.h"

namespace platform {

/// What tells a file from another one, and from what it was before.
struct FileStamp {
    dev_t device = 0;
    ino_t number = 0;
    off_t bytes = 0;
    int64_t modified = 0, changed = 0;  ///< nanoseconds

    auto operator<=>(const FileStamp&) const = default;

    /// None for a file that was changed so lately that its times would not tell the next change.
    static std::optional<FileStamp> of(const FileHandle& file);
};

}  // namespace platform
