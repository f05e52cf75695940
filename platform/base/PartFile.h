// A file that is written beside its target and takes the target's name when it is complete.
#pragma once

#include <filesystem>
#include <functional>

#include "platform/base/File.h"

namespace platform {

/// Where the file system can do that (O_TMPFILE), the file has no name until it is published, so that nothing
/// is left of a program that is killed. Elsewhere it lies hidden beside the target and is locked by its
/// writer, so that removeAbandonedParts() can tell what a killed one has left. One thread.
class PartFile {
  public:
    /// Throws Error naming the target.
    explicit PartFile(const std::filesystem::path& target);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    const FileHandle& file() const { return file_; }
    /// The name that it takes.
    const std::filesystem::path& target() const { return target_; }
    /// Opens the file while this object lives, whether it has a name or not.
    std::string path() const { return file_.path(); }
    /// Replaces the target, once the disk has what was written. Throws Error; the target is then untouched.
    void publish();

  private:
    bool openWithoutName();
    void openLocked();

    std::filesystem::path target_;
    std::filesystem::path hidden_;  ///< the name beside the target; empty: none yet
    FileHandle file_;
};

/// A hidden name beside the target that nothing else has.
std::filesystem::path partName(const std::filesystem::path& target);

/// moveFile() for large files: throws Error(Cancelled), and has changed nothing, when `isCancelled`, asked
/// now and then while it copies, says so.
void moveFile(const std::filesystem::path& from, const std::filesystem::path& to,
              const std::function<bool()>& isCancelled);

/// Removes the hidden parts in a folder, files and folders, that nobody writes any more. Never throws.
void removeAbandonedParts(const std::filesystem::path& folder);

}  // namespace platform
