// Many videos made by one process, some of which fail and some of which are cancelled, and what that leaves
// in the process and on the disk: nothing.
//
// many-jobs [--count N] [--in-process] [--renderer auto|gl|software]
//
// By default each video is made by a worker that this process supervises, as the program does; with
// --in-process all are made here, one after the other. Prints one line; exits with 1 when a job ended in
// another way than it should, when a video differs from the first, or when something has grown.
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <random>
#include <stdexcept>

#include "cli/CommandLine.h"
#include "cli/Console.h"
#include "platform/base/Clock.h"
#include "platform/base/CurrentError.h"
#include "platform/base/Paths.h"
#include "platform/fence/WorkerLimits.h"
#include "tests/program/Program.h"
#include "tests/program/SmallTemplate.h"

namespace multiscene::test {
namespace {

namespace fs = std::filesystem;

constexpr int kFailing = 100, kCancelled = 50;  ///< every which job
/// Allocators keep pages for what comes next; a leak of a kilobyte a job is ten megabytes in ten thousand.
constexpr long kMostGrowthKilobytes = 6000;

constexpr long kIdleThreads = 2;  ///< that pools of libraries keep for a while

struct Options {
    int count = 60;
    bool isInProcess = false;
    std::string renderer = "auto";
};

Options optionsOf(int count, char** words) {
    Options options;
    for (int index = 1; index < count; ++index) {
        const std::string word = words[index];
        if (word == "--in-process")
            options.isInProcess = true;
        else if (word == "--count" && index + 1 < count)
            options.count = std::stoi(words[++index]);
        else if (word == "--renderer" && index + 1 < count)
            options.renderer = words[++index];
        else
            throw std::runtime_error("usage: many-jobs [--count N] [--in-process] [--renderer NAME]");
    }
    return options;
}

/// What of the process and the disk is held.
struct Held {
    long kilobytes = 0, descriptors = 0, threads = 0, files = 0;
};

long entriesOf(const fs::path& folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

Held heldNow(const fs::path& home) {
    Held held;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("RssAnon:")) held.kilobytes = std::stol(line.substr(8));
        if (line.starts_with("Threads:")) held.threads = std::stol(line.substr(8));
    }
    held.descriptors = entriesOf("/proc/self/fd");
    const fs::recursive_directory_iterator files(home);
    held.files =
        std::count_if(begin(files), end(files), [](const auto& entry) { return entry.is_regular_file(); });
    return held;
}

/// Sends SIGINT to this process after a while, from another one.
class Interruption {
  public:
    explicit Interruption(double seconds) {
        const pid_t whom = ::getpid();
        process_ = ::fork();
        if (process_ != 0) return;
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        platform::sleepSeconds(seconds);
        ::kill(whom, SIGINT);
        ::_exit(0);
    }
    /// One that comes after the job meets nobody.
    ~Interruption() {
        ::waitpid(process_, nullptr, 0);
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        const timespec now{};
        ::sigtimedwait(&interrupt, nullptr, &now);
    }

  private:
    pid_t process_;
};

class Jobs {
  public:
    explicit Jobs(Options options) : options_(std::move(options)) {
        // Writing pictures starts threads, and who has some cannot start a worker.
        const pid_t writer = ::fork();
        if (writer == 0) {
            writePicture(folder_.path() / "me.png", 0x3060ff);
            SmallTemplate().write(folder_.path());
            ::_exit(0);
        }
        ::waitpid(writer, nullptr, 0);
    }

    int run() {
        const double start = platform::monotonicSeconds();
        // What the first jobs load once, fonts and drivers, stays.
        const int warm = std::clamp(options_.count / 10, 10, 200);
        for (int number = 1; number <= options_.count; ++number) {
            job(number);
            if (number == warm) before_ = heldNow(home());
        }
        return judge(platform::monotonicSeconds() - start);
    }

  private:
    fs::path home() const { return folder_.path() / "home"; }

    std::vector<std::string> words(bool isFailing) const {
        std::vector<std::string> all{"multiscene",
                                     "--home",
                                     home(),
                                     "make",
                                     folder_.file("small"),
                                     "-o",
                                     folder_.file("out.mp4"),
                                     "--text",
                                     "title=Hello",
                                     "--photo",
                                     "photo=" + folder_.file(isFailing ? "none.png" : "me.png"),
                                     "--renderer",
                                     options_.renderer};
        if (options_.isInProcess) all.push_back("--no-fence");
        return all;
    }

    int execute(const std::vector<std::string>& words) {
        std::vector<const char*> plain;
        for (const std::string& word : words) plain.push_back(word.c_str());
        cli::Console console(false);
        try {
            cli::CommandLine line = cli::parseCommandLine(static_cast<int>(plain.size()), plain.data());
            platform::setDataHome(*line.home);
            return line.command->execute(console, line.settings);
        } catch (...) {
            lastError_ = platform::currentError().what();
            return platform::currentError().exitCode();
        }
    }

    void job(int number) {
        fs::remove(folder_.path() / "out.mp4");
        const bool isFailing = number % kFailing == 0, isCancelled = !isFailing && number % kCancelled == 0;
        int code = 0;
        if (isCancelled) {
            const Interruption interruption(std::uniform_real_distribution(0.0, usualSeconds_)(random_));
            code = execute(words(false));
        } else {
            const double start = platform::monotonicSeconds();
            code = execute(words(isFailing));
            usualSeconds_ = platform::monotonicSeconds() - start;
        }
        const bool isAsIntended = isFailing ? code == 4 : code == 0 || (isCancelled && code == 130);
        if (!isAsIntended)
            fault("job " + std::to_string(number) + " ended with " + std::to_string(code) + ": " +
                  lastError_);
        cancelled_ += code == 130;
        compare(number, code);
    }

    void compare(int number, int code) {
        const fs::path out = folder_.path() / "out.mp4";
        if (fs::exists(out) != (code == 0))
            return fault("job " + std::to_string(number) + " left half of it");
        if (code != 0) return;
        const std::string video = contentOf(out);
        if (first_.empty()) first_ = video;
        if (video != first_) fault("the video of job " + std::to_string(number) + " differs from the first");
    }

    void fault(const std::string& text) {
        ++faults_;
        std::fprintf(stderr, "many-jobs: %s\n", text.c_str());
    }

    int judge(double seconds) {
        const Held after = heldNow(home());
        if (after.descriptors != before_.descriptors) fault("descriptors have grown");
        if (after.threads > before_.threads + kIdleThreads) fault("threads have grown");
        if (after.files != before_.files) fault("files are left");
        // A sanitizer keeps what is given back, and finds leaks by itself.
        if (!platform::isSanitized() && after.kilobytes - before_.kilobytes > kMostGrowthKilobytes)
            fault("memory has grown");
        std::printf(
            "%d jobs %s in %.0f s, %d cancelled: memory %ld to %ld kB, descriptors %ld to %ld, threads %ld "
            "to %ld, "
            "files %ld to %ld, %d faults\n",
            options_.count, options_.isInProcess ? "in one process" : "behind the fence", seconds, cancelled_,
            before_.kilobytes, after.kilobytes, before_.descriptors, after.descriptors, before_.threads,
            after.threads, before_.files, after.files, faults_);
        return faults_ == 0 ? 0 : 1;
    }

    Options options_;
    TemporaryFolder folder_;
    Held before_;
    std::mt19937 random_{7};
    std::string first_, lastError_;
    double usualSeconds_ = 0.1;
    int cancelled_ = 0, faults_ = 0;
};

}  // namespace
}  // namespace multiscene::test

int main(int count, char** words) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // Every thread that meets another in malloc may open an arena of its own, which would hide what leaks.
    ::mallopt(M_ARENA_MAX, 1);
    // One that comes too late for its job waits until somebody takes it.
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    ::sigprocmask(SIG_BLOCK, &interrupt, nullptr);
    try {
        return multiscene::test::Jobs(multiscene::test::optionsOf(count, words)).run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "many-jobs: %s\n", error.what());
        return 2;
    }
}
