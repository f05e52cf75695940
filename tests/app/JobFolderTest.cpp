#include "app/job/JobFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "TemporaryHome.h"

namespace multiscene {
namespace {

namespace fs = std::filesystem;

mode_t modeOf(const fs::path& file) {
    struct stat info {};
    return ::lstat(file.c_str(), &info) == 0 ? info.st_mode & 0777 : 0;
}

TEST(JobFolderTest, IsForItsUserAlone) {
    const test::TemporaryHome home;
    const mode_t before = ::umask(022);
    const JobFolder job;
    EXPECT_EQ(modeOf(job.path()), 0700u);
    test::writeText(job.file("photo.png"), "photo");
    EXPECT_EQ(modeOf(job.file("photo.png")) & 077, 0u);
    platform::moveFile(job.file("photo.png"), home.outside() / "made.png");
    EXPECT_EQ(modeOf(home.outside() / "made.png"), 0644u) << "what is made is as readable as any file";
    ::umask(before);
}

TEST(JobFolderTest, SweepsWhatItCanAndStartsWhateverElseLiesThere) {
    const test::TemporaryHome home;
    const fs::path jobs = home.home() / "jobs";
    test::writeText(jobs / "abandoned/photo.png", "photo");
    fs::create_directories(jobs / "unsweepable/.lock");
    test::writeText(jobs / "file", "");
    const JobFolder living;
    EXPECT_FALSE(fs::exists(jobs / "abandoned"));
    {
        const JobFolder another;
        EXPECT_TRUE(fs::exists(living.path()) && another.path() != living.path());
    }
    std::vector<std::thread> starting;
    for (int index = 0; index < 4; ++index)
        starting.emplace_back([] {
            for (int round = 0; round < 20; ++round) EXPECT_NO_THROW(JobFolder());
        });
    for (std::thread& each : starting) each.join();
    EXPECT_TRUE(fs::exists(living.path()));
}

TEST(JobFolderTest, LiesInTheTemporaryFolderWhereTheHomeCannotBeWritten) {
    const test::TemporaryHome home;
    test::writeText(home.outside() / "file", "");
    platform::setDataHome(home.outside() / "file" / "home");
    fs::path path;
    {
        const JobFolder job;
        path = job.path();
        EXPECT_EQ(modeOf(path), 0700u);
        EXPECT_EQ(modeOf(path.parent_path().parent_path()), 0700u);
        test::writeText(job.file("photo.png"), "photo");
    }
    EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace multiscene
