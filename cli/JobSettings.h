#pragma once

#include <string>
#include <vector>

#include "platform/fence/WorkerLimits.h"

namespace multiscene::cli {

/// How the work of a command is fenced in.
struct JobSettings {
    platform::WorkerLimits limits;
    bool isFenced = true;  ///< else it is done in the program itself, as a debugger wants it
    bool isVerbose = false;
    std::vector<std::string> words;  ///< the options that said so, for runs of the program that it starts
};

}  // namespace multiscene::cli
