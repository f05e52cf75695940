#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "cli/CommandLine.h"
#include "platform/base/CurrentError.h"
#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/base/Memory.h"
#include "platform/base/Paths.h"

namespace multiscene::cli {

using platform::Error;

namespace {

int runCommand(CommandLine& line, Console& console) {
    if (line.home) platform::setDataHome(*line.home);
    platform::log::setVerbose(line.isVerbose);
    const int code = line.command->execute(console, line.settings);
    if (code == 0 && line.command->isResultPrinted()) console.requireWritten();
    return code;
}

int run(int count, const char* const* words, Console& console) {
    CommandLine line = parseCommandLine(count, words);
    if (line.command) return runCommand(line, console);
    console.write(line.text);
    console.requireWritten();
    return 0;
}

/// A file that the program opens must not become standard output, which would be written into it.
void occupyStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
        if (::fcntl(descriptor, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) != descriptor)
            ::_exit(static_cast<int>(platform::ErrorKind::Failed));
}

Console* lastConsole = nullptr;

void sayThatMemoryRanOut() { lastConsole->error(Error(platform::ErrorKind::Transient, "out of memory")); }

int report(Console& console, const Error& error) {
    console.error(error);
    return error.exitCode();
}

}  // namespace
}  // namespace multiscene::cli

int main(int count, char** words) {
    using namespace multiscene::cli;
    occupyStandardDescriptors();
    // Who has started the program may ignore it: the kernel would not tell then how a worker has ended.
    std::signal(SIGCHLD, SIG_DFL);
    // A closed pipe and a file that may grow no further are failed writes like any other.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // What goes wrong in OpenGL is said by us, in one line.
    ::setenv("EGL_LOG_LEVEL", "fatal", 0);
    Console console(asksForJson(count, words));
    lastConsole = &console;
    platform::endOrderlyWithoutMemory(sayThatMemoryRanOut);
    try {
        return run(count, words, console);
    } catch (...) {
        return report(console, platform::currentError());
    }
}
