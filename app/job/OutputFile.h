#pragma once

#include <filesystem>
#include <functional>

namespace multiscene {

/// Where a finished file will lie. Judged before the work starts, so that nobody renders for minutes only to
/// learn that the folder does not exist.
class OutputFile {
  public:
    /// Throws platform::Error: Usage when the name cannot be that of a file or its folder is missing, Failed
    /// when nothing can be written there, Transient when the disk is full. Links are followed.
    explicit OutputFile(const std::filesystem::path& path);

    /// An output that will be an MP4. Throws platform::Error(Usage) also when its name ends like another
    /// format; a name without an ending is none of another format.
    static OutputFile video(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return path_; }
    /// The finished file takes its name, replacing an older one, all at once. Throws platform::Error, and
    /// then nothing has changed: Cancelled when `isCancelled` says so.
    void publish(const std::filesystem::path& finished, const std::function<bool()>& isCancelled = {}) const;

  private:
    std::filesystem::path path_;
};

/// The folder for pictures: made where it is missing. Throws platform::Error as OutputFile does.
std::filesystem::path outputFolder(const std::filesystem::path& path);

}  // namespace multiscene
