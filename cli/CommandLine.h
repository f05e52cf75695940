#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "cli/Command.h"

namespace multiscene::cli {

/// A command line that was understood.
struct CommandLine {
    std::optional<std::filesystem::path> home;
    bool isVerbose = false;
    bool isJson = false;
    JobSettings settings;
    std::unique_ptr<Command> command;  ///< null: `text` answers the call
    std::string text;                  ///< help or version
};

/// Throws platform::Error(Usage).
CommandLine parseCommandLine(int count, const char* const* words);

/// Whether --json is among the words, also when they cannot be parsed.
bool asksForJson(int count, const char* const* words);

}  // namespace multiscene::cli
