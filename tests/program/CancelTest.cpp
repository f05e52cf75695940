#include <unistd.h>

#include <csignal>

#include "platform/base/Clock.h"
#include "platform/store/FileLock.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

using ::testing::SizeIs;

namespace {

class CancelTest : public ProgramTest {
  protected:
    /// A job that would run for hours; its first frames are done.
    std::unique_ptr<Process> longJob(const std::string& name = "out.mp4") {
        SmallTemplate small;
        small.clock = clockOf(1'000'000);
        small.record["fpsLength"] = 1'000'000;
        auto process = std::make_unique<Process>(
            command({"make", small.write(folder.path()), "--json", "-o", folder.file(name)}));
        EXPECT_TRUE(process->waitForOutput("\"progress\"")) << process->finish().errors;
        return process;
    }
};

}  // namespace

TEST_F(CancelTest, EndsCleanlyOnSignals) {
    for (const int number : {SIGINT, SIGTERM}) {
        const auto process = longJob();
        EXPECT_THAT(leftBehind(), SizeIs(1));
        process->signal(number);
        const Result result = process->finish();
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_EQ(result.jsonLines().back().string("event"), "error");
        EXPECT_EQ(result.jsonLines().back().integer("code"), 130);
        EXPECT_THAT(leftBehind(), IsEmpty());
        EXPECT_THAT(filesNamed("out.mp4"), IsEmpty());
    }
}

TEST_F(CancelTest, EndsOnASecondSignalToo) {
    const auto process = longJob();
    process->signal(SIGINT);
    process->signal(SIGINT);
    process->signal(SIGTERM);
    EXPECT_EQ(process->finish().exitCode, 130);
    EXPECT_THAT(leftBehind(), IsEmpty());
    EXPECT_THAT(filesNamed("out.mp4"), IsEmpty());
}

TEST_F(CancelTest, EndsWhileAnotherProgramKeepsTheJobsLocked) {
    const fs::path lock = folder.path() / "home/jobs/.lock";
    fs::create_directories(lock.parent_path());
    const auto held = platform::FileLock::acquire(lock);
    Process process(command({"make", SmallTemplate().write(folder.path()), "-o", folder.file("out.mp4")}));
    const auto isWaiting = [&] {
        std::error_code gone;
        for (const auto& entry :
             fs::directory_iterator("/proc/" + std::to_string(process.number()) + "/fd", gone))
            if (fs::read_symlink(entry, gone) == lock) return true;
        return false;
    };
    for (int turn = 0; turn < 1000 && !isWaiting(); ++turn) ::usleep(10'000);
    const double asked = platform::monotonicSeconds();
    process.signal(SIGINT);
    EXPECT_EQ(process.finish().exitCode, 130);
    EXPECT_LT(platform::monotonicSeconds() - asked, 15) << "it waits";
}

TEST_F(CancelTest, AKilledJobLeavesNoVideoAndIsSweptByTheNextButNotAliveOnes) {
    const auto living = longJob("living.mp4");
    {
        const auto process = longJob("killed.mp4");
        process->signal(SIGKILL);
        EXPECT_EQ(process->finish().exitCode, -1);
    }
    EXPECT_THAT(leftBehind(), SizeIs(2));
    EXPECT_THAT(filesNamed("killed.mp4"), IsEmpty());
    EXPECT_EQ(multiscene({"trace", SmallTemplate().write(folder.path()), "--at", "0"}).exitCode, 0);
    EXPECT_THAT(leftBehind(), SizeIs(1));
    living->signal(SIGTERM);
    EXPECT_EQ(living->finish().exitCode, 130);
    EXPECT_THAT(leftBehind(), IsEmpty());
}

}  // namespace multiscene::test
