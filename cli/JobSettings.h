#pragma once

#include "platform/fence/WorkerLimits.h"

namespace multiscene::cli {

/// How the work of a command is fenced in.
struct JobSettings {
    platform::WorkerLimits limits;
    bool isFenced = true;  ///< else it is done in the program itself, as a debugger wants it
    bool isVerbose = false;
};

}  // namespace multiscene::cli
