#pragma once

#include <sys/types.h>

#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

struct StartedChild {
    pid_t process = -1;
    platform::FileHandle output;  ///< what it writes to its standard output; never blocks
};

/// Starts the program of `spec` as a child of the calling thread, which it does not outlive. Throws Error.
StartedChild startChild(const ChildProgram::Spec& spec);

}  // namespace multiscene::studio
