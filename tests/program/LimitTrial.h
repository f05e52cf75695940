// One limit of the program's table, and what is given to the program to try it.
#pragma once

#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/base/Limits.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

using platform::limitOf;

inline constexpr int kAccepted = 0, kTemplate = 3, kInput = 4;

/// What became of a trial: the exit code and what was said.
struct Verdict {
    int code = kAccepted;
    std::string said;
};

class PlayLimitsTest : public ProgramTest {
  public:
    using ProgramTest::folder;

    /// What takes much longer than its input is long runs out of time.
    Result inTime(std::vector<std::string> words, int cpuSeconds = 20) const;
    Verdict verdict(std::vector<std::string> words) const;
    std::string written(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
        return folder.file(name);
    }
    platform::FileHandle opened(const std::string& name, const std::string& bytes) const {
        return platform::openFile(written(name, bytes), O_RDONLY);
    }
};

/// One limit. `named` is what the refusal says besides the number.
struct Trial {
    std::string limit;
    int code;
    std::vector<std::string> named;
    std::function<Verdict(const PlayLimitsTest&, uint64_t number)> with;
    uint64_t tried = 0;  ///< instead of the table's, where what is tried takes the limit from its caller
    bool isLeast = false;

    uint64_t most() const;
};

inline void PrintTo(const Trial& trial, std::ostream* stream) { *stream << trial.limit; }

/// What a function throws, or says is wrong.
Verdict verdictOf(const std::function<std::string()>& work);

std::string repeated(const std::string& text, size_t times);

std::vector<Trial> fileTrials();
std::vector<Trial> meshTrials();
std::vector<Trial> pictureTrials();
std::vector<Trial> soundAndFilmTrials();
std::vector<Trial> templateTrials();

/// Templates with so much of something.
void fillNodes(SmallTemplate& small, uint64_t number);
void fillFiles(SmallTemplate& small, uint64_t number);
void fillScenes(SmallTemplate& small, uint64_t number);
void fillTargets(SmallTemplate& small, uint64_t bytes);

}  // namespace multiscene::test
