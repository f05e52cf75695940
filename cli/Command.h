#pragma once

#include <memory>
#include <span>
#include <stop_token>
#include <string_view>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "cli/JobSettings.h"

namespace multiscene::cli {

/// One subcommand. Declares its arguments, then runs with what they were. Faults are thrown as
/// platform::Error: its kind is the exit code.
class Command {
  public:
    virtual ~Command() = default;
    virtual void declare(Arguments& arguments) = 0;
    /// Runs the command and returns the exit code. Called while the program has one thread.
    virtual int execute(Console& console, const JobSettings& settings);
    /// Whether what it prints is all that comes of it, so that it has failed when that cannot be written.
    virtual bool isResultPrinted() const { return false; }

  protected:
    /// What execute() does unless it is overridden. Returns the exit code; `stop` is requested by Ctrl-C and
    /// SIGTERM.
    virtual int run(Console&, std::stop_token) { return 0; }
};

struct CommandEntry {
    const char* name;     ///< one word, or several: those that share all but the last form a group
    const char* summary;  ///< empty: left out of the help text
    std::unique_ptr<Command> (*make)();
};

/// Every subcommand in the order of the help text. To add one: a file with its maker and a line in
/// Commands.cpp.
std::span<const CommandEntry> commands();

/// What the help text says of a group.
std::string_view summaryOfGroup(std::string_view group);

}  // namespace multiscene::cli
