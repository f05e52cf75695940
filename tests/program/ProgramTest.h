#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/base/File.h"
#include "platform/image/ImageDecoder.h"
#include "tests/program/Program.h"
#include "tests/program/SmallTemplate.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Value;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

inline platform::Bitmap pictureIn(const fs::path& file) {
    return platform::decodeImage(platform::openFile(file, O_RDONLY), {.source = {.name = file}});
}

/// A home and a folder for each test.
class ProgramTest : public ::testing::Test {
  protected:
    /// The program with this test's home.
    std::vector<std::string> command(std::vector<std::string> words) const {
        std::vector<std::string> all{program(), "--home", folder.file("home")};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    Result multiscene(std::vector<std::string> words) const { return run(command(std::move(words))); }

    /// What jobs have left behind.
    std::vector<std::string> leftBehind() const {
        std::vector<std::string> names;
        const fs::path jobs = folder.path() / "home" / "jobs";
        if (!fs::exists(jobs)) return names;
        for (const auto& entry : fs::directory_iterator(jobs))
            if (entry.is_directory()) names.push_back(entry.path().filename());
        return names;
    }

    /// Files in the test's folder whose name starts with `prefix`, hidden ones of that name included.
    std::vector<std::string> filesNamed(const std::string& prefix) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder.path()))
            if (entry.path().filename().string().find(prefix) != std::string::npos)
                names.push_back(entry.path().filename());
        return names;
    }

    TemporaryFolder folder;
};

}  // namespace multiscene::test
