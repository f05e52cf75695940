#pragma once

#include <string>

#include "platform/base/Error.h"

namespace platform {

/// What a worker was doing when it was last heard.
struct WorkerActivity {
    std::string stage;                    ///< "drawing frame 12"; empty: starting
    std::string file;                     ///< the last one that it opened; empty: none yet
    ErrorKind blame = ErrorKind::Failed;  ///< whose fault it is when that file is too much for the program
};

/// Why a supervisor ended a worker.
enum class WorkerFault { None, Memory, Cpu, Time, StepCpu, StepTime, Threads, Nonsense };

/// The error behind a worker that ended without saying how: by a signal, a limit or an exit of its own. Names
/// the stage and the file. `status` is a wait status; `limit` the value of the limit that was passed.
Error errorOfWorkerEnd(int status, WorkerFault fault, uint64_t limit, const WorkerActivity& activity);

}  // namespace platform
