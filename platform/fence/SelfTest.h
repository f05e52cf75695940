#pragma once

#include <filesystem>
#include <functional>

#include "platform/fence/Attempts.h"
#include "platform/fence/Sandbox.h"

namespace platform {

/// What became of one attempt to break out.
struct AttemptResult {
    const char* name;
    bool isDenied;
    /// This machine has no wall against it, so that nothing else could come of it.
    bool hasNoWall;
    std::string how;  ///< what denied it
};

/// Starts a worker behind the fence for each attempt, with small limits, and says what became of it: `told`
/// is called after each. `folder` is an empty one of the caller's; a stand-in for a private key is written
/// there, out of the workers' reach. While the program has one thread; `signals` as for Supervisor. Throws
/// Error when a worker cannot be started, or Cancelled.
void tryToBreakOut(const std::filesystem::path& folder, int signals,
                   const std::function<void(const AttemptResult&)>& told);

}  // namespace platform
