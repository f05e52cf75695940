#include "platform/watch/FileWatch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/base/Limits.h"
#include "tests/platform/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

/// That this process looks at, as the kernel counts them.
size_t watchedFolders() {
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (fs::read_symlink(entry.path(), gone) != "anon_inode:inotify") continue;
        std::ifstream info("/proc/self/fdinfo/" + entry.path().filename().string());
        for (std::string line; std::getline(info, line);) count += line.starts_with("inotify wd:");
    }
    return count;
}

TEST(FileWatch, LooksAtAsManyFoldersAsTheTableSays) {
    constexpr size_t most = limitOf<size_t>("maxWatchedFolders");
    const test::TemporaryFolder temporary;
    const fs::path folder = temporary.path();
    for (size_t below = 1; below < most - 1; ++below) fs::create_directories(folder / std::to_string(below));
    for (const size_t all : {most - 1, most, most + 1}) {
        if (all >= most) fs::create_directory(folder / std::to_string(all));
        FileWatch watch({folder, folder / "file"});
        EXPECT_EQ(watchedFolders(), std::min(all, most));
        if (all < most) continue;
        fs::create_directories(folder / "later" / "deep");
        watch.hasChanged();
        EXPECT_EQ(watchedFolders(), most);
        fs::remove_all(folder / "later");
    }
}

}  // namespace
}  // namespace platform
