#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>

#include "platform/base/Clock.h"
#include "platform/fence/SelfTest.h"
#include "platform/fence/Supervisor.h"

namespace platform::test {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

/// Workers are forked from the test, which has one thread.
class FenceTest : public ::testing::Test {
  protected:
    FenceTest() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGTSTP}) sigaddset(&signals, number);
        ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        signals_ = FileHandle(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    }

    struct Outcome {
        std::optional<Error> error;
        int code = -1;
        std::string output;
        double seconds = 0;
        pid_t process = -1;
    };

    /// `meanwhile` is called once the worker has told something.
    Outcome outcomeOf(const Worker::Body& body, const WorkerLimits& limits = {},
                      const std::function<void()>& meanwhile = nullptr) {
        const double start = monotonicSeconds();
        Outcome outcome;
        Worker worker(body);
        outcome.process = worker.process();
        Supervisor supervisor(worker, limits, signals_.descriptor(), [&](Message& message) {
            outcome.output += message.field(0);
            for (const FileHandle& file : message.files) outcome.output += contentOf(file);
            if (message.kind == Message::Kind::Request)
                worker.channel().send(Message::make(Message::Kind::Answer, {message.field(0) + " answered"}));
            if (meanwhile) meanwhile();
        });
        try {
            outcome.code = supervisor.run();
        } catch (const Error& error) {
            outcome.error = error;
        }
        outcome.seconds = monotonicSeconds() - start;
        return outcome;
    }

    static std::string contentOf(const FileHandle& file) {
        char text[64];
        const ssize_t size = ::read(file.descriptor(), text, sizeof text);
        return {text, static_cast<size_t>(std::max<ssize_t>(size, 0))};
    }

    static void say(Channel& channel, Message::Kind kind, std::vector<std::string> fields) {
        channel.send(Message::make(kind, std::move(fields)));
    }
    static void sayWhatIsDone(Channel& channel) {
        say(channel, Message::Kind::Sign, {"judging", "", "3"});
        say(channel, Message::Kind::Sign, {"", "/some/picture.png", "4"});
    }
    /// Gone, or dead and waiting for somebody to look.
    static bool endsSoon(pid_t process) {
        for (int turn = 0; turn < 100; ++turn) {
            std::ifstream status("/proc/" + std::to_string(process) + "/stat");
            std::string number, name, state;
            if (!(status >> number >> name >> state) || state == "Z") return true;
            ::usleep(10'000);
        }
        return false;
    }
    [[noreturn]] static void loop() {
        for (std::atomic<unsigned> turn = 0;; ++turn) {
        }
    }

    FileHandle signals_;
};

}  // namespace

TEST_F(FenceTest, AWorkerTellsAsksAndHandsFilesOver) {
    const Outcome outcome = outcomeOf([](Channel& channel) {
        say(channel, Message::Kind::Output, {"hello\x1b "});
        say(channel, Message::Kind::Request, {"question"});
        say(channel, Message::Kind::Output, {channel.receive(true)->field(0) + " "});
        Message message = Message::make(Message::Kind::Output, {""});
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        EXPECT_EQ(::write(ends[1], "from a file", 11), 11);
        ::close(ends[1]);
        message.files.emplace_back(ends[0]);
        channel.send(message);
        say(channel, Message::Kind::Done, {"7"});
        return 0;
    });
    EXPECT_FALSE(outcome.error);
    EXPECT_EQ(outcome.code, 7);
    EXPECT_EQ(outcome.output, "hello? questionquestion answered from a file");
}

TEST_F(FenceTest, AMessageHasASizeAndItsSenderMayBeGone) {
    auto ends = Channel::pair();
    Channel &left = ends.first, &right = ends.second;
    const auto tooLarge = [&](Message message) { EXPECT_THROW(left.send(message), Error); };
    tooLarge(Message::make(Message::Kind::Output, {std::string(Message::maxBytes, 'x')}));
    tooLarge(Message::make(Message::Kind::Output, std::vector<std::string>(Message::maxFields + 1)));
    Message files = Message::make(Message::Kind::Output, {});
    for (size_t count = 0; count <= Message::maxFiles; ++count)
        files.files.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    tooLarge(std::move(files));

    // More than there is room for while nobody listens.
    while (left.sendAtOnce(Message::make(Message::Kind::Output, {"waits"}))) continue;
    EXPECT_EQ(right.receive()->field(0), "waits");
    EXPECT_FALSE(left.receive());
    EXPECT_FALSE(left.isClosed());
    // What it said is heard although it went without hearing everything.
    right.send(Message::make(Message::Kind::Output, {"last"}));
    { const Channel gone = std::move(right); }
    EXPECT_EQ(left.receive()->field(0), "last");
    EXPECT_FALSE(left.receive());
    EXPECT_TRUE(left.isClosed());
    EXPECT_FALSE(left.send(Message::make(Message::Kind::Output, {"to nobody"})));
}

TEST_F(FenceTest, AnErrorComesBackAsItWas) {
    const Outcome outcome = outcomeOf([](Channel& channel) {
        channel.send(
            Message::of(Message::Kind::Failure, Error(ErrorKind::Input, "is no picture", "a.png", "photo")));
        return 4;
    });
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->kind(), ErrorKind::Input);
    EXPECT_STREQ(outcome.error->what(), "a.png: photo: is no picture");
}

TEST_F(FenceTest, AWorkerThatDiesIsAnErrorThatNamesStageAndFile) {
    if (isSanitized()) GTEST_SKIP() << "sanitizers have their own way with crashes";
    const struct {
        const char* what;
        ErrorKind kind;
        std::function<int()> end;
    } cases[] = {
        {"crashed (segmentation fault) while judging", ErrorKind::Input, [] { return ::raise(SIGSEGV); }},
        {"crashed (aborted) while judging", ErrorKind::Input, [] { return ::raise(SIGABRT); }},
        {"killed from outside", ErrorKind::Transient, [] { return ::raise(SIGKILL); }},
        {"without a result (exit code 5)", ErrorKind::Input, [] { return 5; }},
        {"out of memory", ErrorKind::Transient, [] { return 75; }},
    };
    for (const auto& each : cases) {
        const Outcome outcome = outcomeOf([&](Channel& channel) {
            sayWhatIsDone(channel);
            return each.end();
        });
        ASSERT_TRUE(outcome.error) << each.what;
        EXPECT_EQ(outcome.error->kind(), each.kind) << each.what;
        EXPECT_EQ(outcome.error->file(), "/some/picture.png");
        EXPECT_THAT(outcome.error->message(), HasSubstr(each.what));
    }
}

TEST_F(FenceTest, ALimitEndsTheWorkerAndSaysWhichItWas) {
    const struct {
        const char* setting;
        const char* what;
        std::function<void()> work;
    } cases[] = {
        {"maxStepCpuSeconds=1", "1 s of processor time for one step", [] { loop(); }},
        {"maxStepSeconds=1", "no sign of life for 1 s", [] { ::pause(); }},
        {"maxJobSeconds=1", "longer than 1 s", [] { ::pause(); }},
        {"maxJobCpuSeconds=1", "processor time", [] { loop(); }},
        {"maxJobMemory=268435456", "more than 256 MiB",
         [] {
             const std::vector<char> memory(size_t{300} << 20, 'm');
             ::pause();
         }},
        {"maxJobThreads=4", "more than 4 threads",
         [] {
             for (int count = 0; count < 4; ++count) std::thread([] { ::pause(); }).detach();
             ::pause();
         }},
    };
    for (const auto& each : cases) {
        if (isSanitized() && std::string_view(each.setting).starts_with("maxJobMemory")) continue;
        WorkerLimits limits;
        limits.set(each.setting);
        const Outcome outcome = outcomeOf(
            [&](Channel& channel) {
                limits.apply();
                sayWhatIsDone(channel);
                each.work();
                return 0;
            },
            limits);
        ASSERT_TRUE(outcome.error) << each.setting;
        EXPECT_EQ(outcome.error->kind(), ErrorKind::Input) << each.setting;
        EXPECT_THAT(outcome.error->message(), AllOf(HasSubstr(each.what), HasSubstr("while judging")));
        EXPECT_LT(outcome.seconds, 20) << each.setting;
    }
}

/// The start, and more for what the job says it makes, but never more than the most.
TEST_F(FenceTest, LimitsFollowFromWhatTheJobMakes) {
    const auto endOf = [&](std::vector<const char*> settings, int64_t frames) {
        WorkerLimits limits;
        for (const char* setting : settings) limits.set(setting);
        return outcomeOf(
            [&](Channel& channel) {
                if (frames != 0) say(channel, Message::Kind::Plan, {std::to_string(frames), "1000000"});
                sayWhatIsDone(channel);
                for (;;) ::pause();
                return 0;
            },
            limits);
    };
    const std::vector<const char*> first{"jobSeconds=1", "jobMillisecondsPerFrame=500",
                                         "jobNanosecondsPerPixel=500"};
    EXPECT_THAT(endOf(first, 0).error->message(), HasSubstr("longer than 1 s"));
    EXPECT_THAT(endOf(first, 1).error->message(), HasSubstr("longer than 2 s"));
    auto most = first;
    most.push_back("maxJobSeconds=3");
    for (const int64_t frames : {int64_t{1} << 62, int64_t{-1}})
        EXPECT_THAT(endOf(most, frames).error->message(), HasSubstr("longer than 3 s")) << frames;

    const WorkerLimits usual = WorkerLimits().forJob(300, 720 * 1280);
    EXPECT_EQ(usual.memoryBytes, (uint64_t{2} << 30) + 256 * 720 * 1280);
    EXPECT_EQ(usual.wallSeconds, 3600u + 300 * 2 + 2764);
    WorkerLimits asked;
    asked.set("maxJobMemory=8589934592");
    EXPECT_EQ(asked.forJob(1, 1).memoryBytes, uint64_t{8} << 30);
}

/// What a worker finds out itself, byte by byte and descriptor by descriptor.
TEST_F(FenceTest, WhatTheKernelCountsEndsAtTheLimit) {
    const auto bytesOfAFile = [] {
        const FileHandle file(::memfd_create("limits", MFD_CLOEXEC));
        int bytes = 0;
        while (::write(file.descriptor(), "x", 1) == 1) ++bytes;
        return std::to_string(bytes) + (errno == EFBIG ? " bytes" : " bytes, and another fault");
    };
    const auto descriptors = [] {
        std::vector<FileHandle> taken;  // and given back: a sanitizer needs one to look around
        do taken.emplace_back(::dup(STDERR_FILENO));
        while (taken.back());
        return std::to_string(taken[taken.size() - 2].descriptor() + 1) + " files";
    };
    const auto found = [&](WorkerLimits limits, const std::function<std::string()>& look, bool plans) {
        return outcomeOf(
                   [&](Channel& channel) {
                       std::signal(SIGXFSZ, SIG_IGN);
                       limits.apply();
                       if (plans) say(channel, Message::Kind::Plan, {"3", "100"});
                       say(channel, Message::Kind::Request, {""});
                       channel.receive(true);  // by then it has heard of the plan
                       say(channel, Message::Kind::Output, {look()});
                       say(channel, Message::Kind::Done, {"0"});
                       return 0;
                   },
                   limits)
            .output;
    };
    WorkerLimits limits;
    limits.set("maxJobFileBytes=1000");
    EXPECT_EQ(found(limits, bytesOfAFile, false), "1000 bytes");
    EXPECT_EQ(found(limits, bytesOfAFile, true), "1000 bytes") << "whatever it makes";
    limits = {};
    limits.firstFileBytes = 1000;
    limits.fileBytesPerPixel = 2;
    EXPECT_EQ(found(limits, bytesOfAFile, true), "1600 bytes");
    limits.set("maxJobOpenFiles=40");
    EXPECT_EQ(found(limits, descriptors, false), "40 files");
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit lower{500, usual.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &lower), 0);
    EXPECT_EQ(found(limits, bytesOfAFile, true), "500 bytes") << "the program's own";
    ::setrlimit(RLIMIT_FSIZE, &usual);
}

TEST_F(FenceTest, AsManyThreadsAsAreAllowedLive) {
    for (const int threads : {3, 4}) {
        WorkerLimits limits;
        limits.set("maxJobThreads=4");
        const int own = isSanitized() ? 2 : 1;  // some sanitizers have one
        const Outcome outcome = outcomeOf(
            [&](Channel& channel) {
                for (int more = own; more < threads; ++more) std::thread([] { ::pause(); }).detach();
                ::usleep(300'000);  // several looks
                say(channel, Message::Kind::Done, {"0"});
                ::_exit(0);
                return 0;
            },
            limits);
        EXPECT_EQ(outcome.code, 0) << threads;
    }
}

TEST_F(FenceTest, AJobMayTakeItsStartAndWhatItMakesUpToTheMost) {
    WorkerLimits limits;
    limits.firstMemoryBytes = limits.firstSeconds = limits.firstFileBytes = 100;
    limits.memoryBytesPerPixel = limits.fileBytesPerPixel = 1;
    limits.millisecondsPerFrame = 1000;
    limits.nanosecondsPerPixel = 0;
    limits.memoryBytes = limits.cpuSeconds = limits.wallSeconds = limits.fileBytes = 110;
    for (const auto& [more, may] : {std::pair<int64_t, uint64_t>{9, 109}, {10, 110}, {11, 110}}) {
        EXPECT_EQ(limits.forJob(1, more).memoryBytes, may);
        EXPECT_EQ(limits.forJob(1, more).fileBytes, may);
        EXPECT_EQ(limits.forJob(more, 0).cpuSeconds, may);
        EXPECT_EQ(limits.forJob(more, 0).wallSeconds, may);
    }
    limits.nanosecondsPerPixel = 1'000'000;
    limits.wallSeconds = 1000;
    EXPECT_EQ(limits.forJob(2, 3000).wallSeconds, 108u);
}

TEST_F(FenceTest, SignsOfLifeGiveMoreTime) {
    WorkerLimits limits;
    limits.set("maxStepSeconds=1");
    const Outcome outcome = outcomeOf(
        [](Channel& channel) {
            for (int turn = 0; turn < 5; ++turn) {
                ::usleep(400'000);
                say(channel, Message::Kind::Progress, {std::to_string(turn)});
            }
            say(channel, Message::Kind::Done, {"0"});
            return 0;
        },
        limits);
    EXPECT_EQ(outcome.code, 0);
}

TEST_F(FenceTest, TheTimeOfAPauseIsNotTheWorkers) {
    WorkerLimits limits;
    limits.set("maxJobSeconds=2");
    const pid_t test = ::getpid();
    const Outcome outcome = outcomeOf(
        [](Channel& channel) {
            say(channel, Message::Kind::Output, {"now"});
            ::usleep(200'000);
            say(channel, Message::Kind::Done, {"0"});
            return 0;
        },
        limits,
        [&] {
            if (::fork() == 0) {
                ::usleep(3'000'000);
                ::kill(test, SIGCONT);
                ::_exit(0);
            }
            ::raise(SIGTSTP);
        });
    EXPECT_EQ(outcome.code, 0) << (outcome.error ? outcome.error->what() : "");
    ::wait(nullptr);
}

TEST_F(FenceTest, TheSameFrameAgainIsNoSignOfLife) {
    WorkerLimits limits;
    limits.set("maxStepSeconds=1");
    const Outcome outcome = outcomeOf(
        [](Channel& channel) {
            for (;;) {
                ::usleep(100'000);
                say(channel, Message::Kind::Progress, {"3"});
            }
            return 0;
        },
        limits);
    ASSERT_TRUE(outcome.error);
    EXPECT_THAT(outcome.error->message(), HasSubstr("while drawing frame 3"));
}

/// Whatever it does: it listens to nobody, writes without end into a pipe that is full, or waits.
TEST_F(FenceTest, ASignalEndsEveryWorkerWithinHalfASecond) {
    const std::function<void()> works[] = {
        [] { loop(); },
        [] {
            for (;;) ::pause();
        },
        [] {
            for (;;) static_cast<void>(!::write(STDERR_FILENO, "\x1b", 1));
        },
    };
    ::testing::internal::CaptureStderr();
    for (const auto& work : works)
        for (const int number : {SIGINT, SIGTERM}) {
            double asked = 0;
            const Outcome outcome = outcomeOf(
                [&](Channel& channel) {
                    say(channel, Message::Kind::Output, {"now"});
                    work();
                    return 0;
                },
                {},
                [&] {
                    asked = monotonicSeconds();
                    ::raise(number);
                });
            ASSERT_TRUE(outcome.error);
            EXPECT_EQ(outcome.error->kind(), ErrorKind::Cancelled);
            EXPECT_LT(monotonicSeconds() - asked, 20) << "it hangs";
            EXPECT_NE(::kill(outcome.process, 0), 0);
        }
    // Nothing of what a terminal would obey comes through.
    const std::string errors = ::testing::internal::GetCapturedStderr();
    EXPECT_FALSE(errors.empty());
    EXPECT_EQ(errors.find_first_not_of('?'), std::string::npos);
}

TEST_F(FenceTest, NonsenseEndsTheWorker) {
    const Outcome outcome = outcomeOf([](Channel& channel) {
        EXPECT_EQ(::write(channel.descriptor(), "nonsense", 8), 8);
        for (;;) ::pause();
        return 0;
    });
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->kind(), ErrorKind::Failed);
}

TEST_F(FenceTest, AWorkerDiesWithItsSupervisorAndWithEverythingThatItStarted) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    // A supervisor of its own, which is killed.
    const pid_t supervisor = ::fork();
    if (supervisor == 0) {
        ::close(ends[0]);
        Worker worker([&](Channel& channel) {
            say(channel, Message::Kind::Output, {"alive"});
            for (;;) ::pause();
            return 0;
        });
        while (!worker.channel().receive(true)) {
        }
        const pid_t process = worker.process();
        static_cast<void>(!::write(ends[1], &process, sizeof process));
        for (;;) ::pause();
    }
    pid_t process = 0;
    ASSERT_EQ(::read(ends[0], &process, sizeof process), static_cast<ssize_t>(sizeof process));
    ::kill(supervisor, SIGKILL);
    ::waitpid(supervisor, nullptr, 0);
    EXPECT_TRUE(endsSoon(process));
    ::close(ends[0]);
    ::close(ends[1]);

    const Outcome outcome = outcomeOf([&](Channel& channel) {
        const pid_t child = ::fork();
        if (child == 0)
            for (;;) ::pause();
        say(channel, Message::Kind::Output, {std::to_string(child)});
        say(channel, Message::Kind::Done, {"0"});
        return 0;
    });
    EXPECT_TRUE(endsSoon(std::stoi(outcome.output)));
}

/// Where system calls are not filtered.
TEST_F(FenceTest, WhatLeftTheWorkersGroupDoesNotHoldTheSupervisorUp) {
    const Outcome outcome = outcomeOf([&](Channel& channel) {
        const pid_t child = ::fork();
        if (child == 0) {
            ::setsid();
            ::usleep(3'000'000);
            ::_exit(0);
        }
        ::usleep(100'000);
        say(channel, Message::Kind::Done, {"0"});
        return 0;
    });
    EXPECT_EQ(outcome.code, 0);
    EXPECT_LT(outcome.seconds, 20);
}

TEST_F(FenceTest, AWorkerIsNotStartedWhileThreadsRun) {
    if (isSanitized()) GTEST_SKIP() << "sanitizers have threads of their own";
    std::thread thread([] { ::usleep(300'000); });
    EXPECT_THROW(Worker([](Channel&) { return 0; }), Error);
    thread.join();
}

TEST_F(FenceTest, WhatTheKernelOffersHolds) {
    char name[] = "/tmp/multiscene-fence-XXXXXX";
    const fs::path folder = ::mkdtemp(name);
    tryToBreakOut(folder, signals_.descriptor(), [](const AttemptResult& result) {
        EXPECT_TRUE(result.isDenied || result.hasNoWall) << result.name;
    });
    EXPECT_EQ(fs::exists(folder / "home" / "written"), landlockVersion() < 2);
    fs::remove_all(folder);
}

TEST_F(FenceTest, LimitsAreChangedByTheirNames) {
    WorkerLimits limits;
    limits.set("maxJobMemory=1073741824");
    EXPECT_EQ(limits.memoryBytes, 1073741824u);
    for (const char* wrong :
         {"maxJobMemory", "maxJobMemory=", "maxJobMemory=0", "maxJobMemory=1g", "maxSceneNodes=5", "=3", ""})
        EXPECT_THROW(limits.set(wrong), Error) << wrong;
}

}  // namespace platform::test
