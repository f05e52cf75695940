// A folder whose content is not yet, or no longer, anybody's.
#pragma once

#include <filesystem>

#include "platform/base/File.h"

namespace platform {

/// Lies hidden in another folder, on the same file system, and goes with what is in it when the object ends.
/// That of a program that was killed is removed by removeAbandonedParts(). One thread.
class PartFolder {
  public:
    /// Made in `parent`; `purpose` is a part of its name. Throws Error.
    PartFolder(const std::filesystem::path& parent, const std::string& purpose);
    ~PartFolder();
    PartFolder(const PartFolder&) = delete;
    PartFolder& operator=(const PartFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// It outlives this object, until removeAbandonedParts() finds it.
    void leave() { isLeft_ = true; }

  private:
    std::filesystem::path path_;
    FileHandle lock_;
    bool isLeft_ = false;
};

}  // namespace platform
