#pragma once

#include <filesystem>
#include <string>

#include "platform/base/Paths.h"

namespace platform::test {

/// A folder of the test's own, removed at its end.
class TemporaryFolder {
  public:
    explicit TemporaryFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
        : path_(std::filesystem::canonical(parent) / ("multiscene-" + uniqueIdentifier())) {
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    const std::filesystem::path path_;
};

}  // namespace platform::test
