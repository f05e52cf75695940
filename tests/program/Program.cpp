#include "tests/program/Program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "platform/base/Json.h"
#include "platform/base/Paths.h"
#include "platform/fence/WorkerLimits.h"

namespace multiscene::test {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

struct Pipe {
    int reader = -1, writer = -1;

    Pipe() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        reader = ends[0];
        writer = ends[1];
    }
};

pid_t spawn(const std::vector<std::string>& words, int output, int errors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int failure = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("cannot start " + words[0]);
    return process;
}

/// Appends what can be read now; false at the end.
bool append(int reader, std::string& text) {
    char buffer[65536];
    const ssize_t count = ::read(reader, buffer, sizeof buffer);
    if (count > 0) text.append(buffer, static_cast<size_t>(count));
    return count > 0;
}

}  // namespace

std::vector<std::string> Result::errorLines() const { return linesOf(errors); }

std::vector<platform::Value> Result::jsonLines() const {
    std::vector<platform::Value> values;
    for (const std::string& line : linesOf(output)) values.push_back(platform::parseJson(line, "output"));
    return values;
}

Process::Process(const std::vector<std::string>& words) {
    const Pipe output, errors;
    process_ = spawn(words, output.writer, errors.writer);
    ::close(output.writer);
    ::close(errors.writer);
    output_ = output.reader;
    errors_ = errors.reader;
}

Process::~Process() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
    for (const int descriptor : {output_, errors_})
        if (descriptor >= 0) ::close(descriptor);
}

void Process::signal(int number) const { ::kill(process_, number); }

bool Process::read() {
    pollfd waiting[] = {{output_, POLLIN, 0}, {errors_, POLLIN, 0}};
    if (output_ < 0 && errors_ < 0) return false;
    ::poll(waiting, 2, -1);
    const auto take = [](const pollfd& ready, int& descriptor, std::string& text) {
        if (descriptor < 0 || ready.revents == 0 || append(descriptor, text)) return;
        ::close(descriptor);
        descriptor = -1;
    };
    take(waiting[0], output_, result_.output);
    take(waiting[1], errors_, result_.errors);
    return true;
}

bool Process::waitForOutput(const std::string& text) {
    while (result_.output.find(text) == std::string::npos)
        if (!read()) return false;
    return true;
}

Result Process::finish() {
    while (read()) {
    }
    int status = 0;
    rusage usage{};
    ::wait4(process_, &status, 0, &usage);
    result_.peakKilobytes = usage.ru_maxrss;
    process_ = -1;
    if (WIFEXITED(status)) result_.exitCode = WEXITSTATUS(status);
    // A worker whose result has been heard may end as it likes.
    for (const char* report : {"Sanitizer: ", "runtime error: "})
        if (result_.errors.find(report) != std::string::npos) throw std::runtime_error(result_.errors);
    return result_;
}

int sanitizerFactor() { return platform::isSanitized() ? 10 : 1; }

std::string program() { return MULTISCENE_PROGRAM; }

Result run(const std::vector<std::string>& words) { return Process(words).finish(); }

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace multiscene::test
