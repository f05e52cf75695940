#include <csignal>
#include <cstdio>
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
    return line.command->execute(console, line.settings);
}

int run(int count, const char* const* words, Console& console) {
    CommandLine line = parseCommandLine(count, words);
    if (line.command) return runCommand(line, console);
    std::fputs(line.text.c_str(), stdout);
    return 0;
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
