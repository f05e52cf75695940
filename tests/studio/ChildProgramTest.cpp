// Programs that behave as no program should, and the studio that runs them.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <future>
#include <thread>

#include "studio/process/ChildProgram.h"

namespace multiscene::studio {
namespace {

using platform::Value;
using std::chrono::steady_clock;

struct Outcome {
    std::vector<Value> lines;
    ChildProgram::End end;
    double seconds = 0;
};

ChildProgram::Spec shell(const std::string& script) {
    ChildProgram::Spec spec;
    spec.program = "/bin/sh";
    spec.arguments = {"-c", script};
    return spec;
}

/// Runs it to its end; cancels it after the first line when told to.
Outcome outcomeOf(ChildProgram::Spec spec, bool isCancelled = false) {
    platform::DispatchQueue queue("test");
    Outcome outcome;
    std::promise<void> ended;
    std::unique_ptr<ChildProgram> child;
    const auto start = steady_clock::now();
    queue.sync([&] {
        child = std::make_unique<ChildProgram>(
            queue, std::move(spec),
            [&](const Value& line) {
                outcome.lines.push_back(line);
                if (isCancelled) child->cancel();
            },
            [&](const ChildProgram::End& end) {
                outcome.end = end;
                child.reset();
                ended.set_value();
            });
    });
    ended.get_future().wait();
    outcome.seconds = std::chrono::duration<double>(steady_clock::now() - start).count();
    return outcome;
}

TEST(ChildProgramTest, TellsWhatWasSaidAndHowItEnded) {
    const Outcome outcome = outcomeOf(shell(
        R"(echo '{"event":"progress","frame":1}'; echo rubbish; echo '{broken'
           echo '{"event":"error","code":4,"message":"no"}'; printf '{"event":"cut'; exit 4)"));
    ASSERT_EQ(outcome.lines.size(), 2u);
    EXPECT_EQ(outcome.lines[0].integer("frame"), 1);
    EXPECT_EQ(outcome.end.exitCode, 4);
    EXPECT_EQ(outcome.end.error.string("message"), "no");
    EXPECT_EQ(outcomeOf(shell("kill -SEGV $$")).end.signal, SIGSEGV);
    ChildProgram::Spec missing = shell("");
    missing.program = "/nowhere";
    EXPECT_EQ(outcomeOf(std::move(missing)).end.exitCode, 127);
}

TEST(ChildProgramTest, StartsWithNothingOfTheStudiosButItsConnection) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const platform::FileHandle near(ends[0]);
    ::setenv("STUDIO_SECRET", "1", 1);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    ChildProgram::Spec spec = shell(
        R"(echo through >&3; read line; n=$(ls /proc/self/fd | tr '\n' ' ')
           m=$(grep SigBlk /proc/self/status | tr -d ' \t')
           echo "{\"open\":\"$n\",\"mask\":\"$m\",\"secret\":\"$STUDIO_SECRET\",\"nice\":$(nice)}")");
    spec.connection = platform::FileHandle(ends[1]);
    spec.niceness = 7;
    const Outcome outcome = outcomeOf(std::move(spec));
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    ASSERT_EQ(outcome.lines.size(), 1u);
    // "ls" has one of its own.
    EXPECT_EQ(outcome.lines[0].string("open"), "0 1 2 3 4 ");
    EXPECT_EQ(outcome.lines[0].string("mask"), "SigBlk:0000000000000000");
    EXPECT_EQ(outcome.lines[0].string("secret"), "");
    EXPECT_EQ(outcome.lines[0].integer("nice"), 7);
    char heard[8] = {};
    EXPECT_EQ(::read(near.descriptor(), heard, sizeof heard), 8);
    EXPECT_EQ(std::string(heard, 7), "through");
}

TEST(ChildProgramTest, OneThatNeverStopsTalkingIsEnded) {
    for (const char* script : {R"(trap '' TERM; yes '{"event":"x"}')", "exec cat /dev/zero"}) {
        const Outcome outcome = outcomeOf(shell(script));
        EXPECT_EQ(outcome.end.fault, "says too much") << script;
        EXPECT_NE(outcome.end.signal, 0) << script;
    }
}

TEST(ChildProgramTest, OneThatDoesNotWantToEndIsKilled) {
    const Outcome stubborn = outcomeOf(shell("trap '' TERM; echo '{}'; while :; do sleep 1; done"), true);
    EXPECT_EQ(stubborn.end.signal, SIGKILL);
    EXPECT_GT(stubborn.seconds, 1.9);
    EXPECT_EQ(outcomeOf(shell("echo '{}'; exec sleep 60"), true).end.signal, SIGTERM);
    ChildProgram::Spec late = shell("exec sleep 60");
    late.most = std::chrono::seconds(1);
    EXPECT_EQ(outcomeOf(std::move(late)).end.fault, "takes too long");
}

TEST(ChildProgramTest, DestroyedInTheMiddleItIsGoneAndSilent) {
    platform::DispatchQueue queue("test");
    std::atomic<int> calls{0};
    std::unique_ptr<ChildProgram> child;
    const auto make = [&] {
        child = std::make_unique<ChildProgram>(
            queue, shell("while :; do echo '{}'; done"), [&](const Value&) { ++calls; },
            [&](const ChildProgram::End&) { ADD_FAILURE(); });
    };
    for (int round = 0; round < 20; ++round) {
        queue.sync(make);
        std::this_thread::sleep_for(std::chrono::milliseconds(round * 3));
        queue.sync([&] { child.reset(); });
        const int then = calls;
        queue.sync([] {});
        EXPECT_EQ(calls, then);
    }
}

/// A process that runs a program; it is killed, and nothing is left to tell anybody.
TEST(ChildProgramTest, NoProgramOutlivesAKilledStudio) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t studio = ::fork();
    if (studio == 0) {
        platform::DispatchQueue queue("test");
        std::unique_ptr<ChildProgram> child;
        queue.sync([&] {
            child = std::make_unique<ChildProgram>(
                queue, shell("echo \"{\\\"process\\\":$$}\"; exec sleep 60"),
                [&](const Value& line) {
                    const auto process = static_cast<pid_t>(line.integer("process"));
                    if (::write(pipe[1], &process, sizeof process) < 0) ::_exit(1);
                },
                [](const ChildProgram::End&) {});
        });
        ::pause();
        ::_exit(0);
    }
    pid_t program = 0;
    ASSERT_EQ(::read(pipe[0], &program, sizeof program), static_cast<ssize_t>(sizeof program));
    ASSERT_EQ(::kill(program, 0), 0);
    ::kill(studio, SIGKILL);
    ::waitpid(studio, nullptr, 0);
    const std::string folder = "/proc/" + std::to_string(program) + "/exe";
    const auto isGone = [&] {
        char target[8];
        return ::readlink(folder.c_str(), target, sizeof target) < 0;  // a zombie has none
    };
    for (int tries = 0; tries < 100 && !isGone(); ++tries) ::usleep(20'000);
    EXPECT_TRUE(isGone());
}

}  // namespace
}  // namespace multiscene::studio
