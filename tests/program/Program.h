// Runs the built program as its users do.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/base/Value.h"
#include "tests/platform/TemporaryFolder.h"

namespace multiscene::test {

/// What a finished program left.
struct Result {
    int exitCode = -1;       ///< -1 when a signal ended it
    std::string output;      ///< standard output
    std::string errors;      ///< standard error
    long peakKilobytes = 0;  ///< of the largest of its processes

    std::vector<std::string> errorLines() const;
    /// Standard output, each line parsed as JSON.
    std::vector<platform::Value> jsonLines() const;
};

/// A program that is running.
class Process {
  public:
    explicit Process(const std::vector<std::string>& words);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t number() const { return process_; }
    void signal(int number) const;
    /// Blocks until standard output holds `text`; false when the program ended before.
    bool waitForOutput(const std::string& text);
    Result finish();

  private:
    bool read();

    pid_t process_ = -1;
    int output_ = -1, errors_ = -1;
    Result result_;
};

/// How many times as long, and as much memory, the program may take as it is built: 1 without a sanitizer.
int sanitizerFactor();

/// The path of the program under test.
std::string program();
Result run(const std::vector<std::string>& words);

using platform::test::TemporaryFolder;

std::string contentOf(const std::filesystem::path& file);

}  // namespace multiscene::test
