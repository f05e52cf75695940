#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/base/File.h"
#include "platform/base/Paths.h"
#include "tests/platform/TemporaryFolder.h"

namespace multiscene::test {

/// A data home of its own, removed afterwards.
class TemporaryHome {
  public:
    TemporaryHome() { platform::setDataHome(home()); }

    /// The data home itself.
    std::filesystem::path home() const { return folder_.path() / "home"; }
    /// A place beside the data home, for what a user has lying around.
    std::filesystem::path outside() const { return folder_.path(); }

  private:
    const platform::test::TemporaryFolder folder_;
};

inline void writeText(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string readText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace multiscene::test
