// Plays the corpus of every fuzz target, then mutations of it for a short time. The long runs, which find new
// edges, are libFuzzer's: docs/howto/fuzz.md.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>

#include "platform/base/File.h"
#include "platform/fence/WorkerLimits.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Mutator.h"

namespace multiscene::fuzz {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Input = std::vector<uint8_t>;

// Of one input: processor time, and time for what only waits, on a busy machine.
constexpr time_t mostCpuSeconds = 10;
constexpr unsigned mostSeconds = 120;
constexpr long mostKilobytes = 1 << 20;
/// With a sanitizer everything takes many times as much.
int sanitizerFactor() { return platform::isSanitized() ? 10 : 1; }

/// Keeps what is being played in a file when the process dies of it.
class LastWords {
  public:
    explicit LastWords(const std::string& target) {
        file_ = (fs::current_path() / ("fuzz-crash-" + target)).string();
        for (const int signal : signals) std::signal(signal, say);
    }
    ~LastWords() {
        setTimers(0, 0);
        for (const int signal : signals) std::signal(signal, SIG_DFL);
    }

    static void play(const FuzzTarget& target, const Input& input) {
        current_ = input;
        const int factor = sanitizerFactor();
        setTimers(mostCpuSeconds * factor, mostSeconds * static_cast<unsigned>(factor));
        target.play(input);
    }

  private:
    static constexpr int signals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM, SIGPROF};

    static void setTimers(time_t cpuSeconds, unsigned seconds) {
        const itimerval timer{{}, {cpuSeconds, 0}};
        ::setitimer(ITIMER_PROF, &timer, nullptr);
        ::alarm(seconds);
    }

    static void say(int signal) {
        const int file = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        (void)!::write(file, current_.data(), current_.size());
        (void)!::write(2, "fuzz: the input is kept in ", 27);
        (void)!::write(2, file_.data(), file_.size());
        (void)!::write(2, "\n", 1);
        std::signal(signal, SIG_DFL);
        ::raise(signal == SIGALRM || signal == SIGPROF ? SIGABRT : signal);
    }

    static inline std::string file_;
    static inline Bytes current_;
};

std::vector<Input> corpusOf(const FuzzTarget& target) {
    if (const char* only = std::getenv("MULTISCENE_FUZZ_INPUT")) return {platform::readFile(only, 1u << 20)};
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(MULTISCENE_FUZZ_CORPUS) / target.name))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<Input> inputs;
    for (const fs::path& file : files) inputs.push_back(platform::readFile(file, 1u << 20));
    return inputs;
}

double secondsOfMutations() {
    const char* wanted = std::getenv("MULTISCENE_FUZZ_SECONDS");
    return wanted ? std::atof(wanted) : 2;
}

class FuzzTest : public ::testing::TestWithParam<FuzzTarget> {};

TEST_P(FuzzTest, Survives) {
    const FuzzTarget& target = GetParam();
    const auto corpus = corpusOf(target);
    ASSERT_FALSE(corpus.empty());
    const LastWords lastWords{std::string(target.name)};
    for (const Input& input : corpus) LastWords::play(target, input);

    Mutator mutator(corpus, dictionaryOf(target.name), target.mostBytes);
    const auto end = Clock::now() + std::chrono::duration<double>(secondsOfMutations());
    size_t count = 0;
    for (; Clock::now() < end; ++count) LastWords::play(target, mutator.next());
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss / sanitizerFactor(), mostKilobytes) << "an input took much memory";
    std::printf("%s: %zu corpus files, %zu mutations\n", std::string(target.name).c_str(), corpus.size(),
                count);
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzTest, ::testing::ValuesIn(fuzzTargets().begin(), fuzzTargets().end()),
                         [](const auto& target) {
                             std::string name(target.param.name);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace multiscene::fuzz
