// The walls around a worker.
#pragma once

#include <string>
#include <vector>

#include "platform/fence/Landlock.h"

namespace platform {

/// How much of the sandbox holds.
struct SandboxState {
    enum class Level { Full, Partial, None };

    Level level = Level::Full;
    std::vector<std::string> missing;  ///< what does not hold and why, a line each

    /// "full", "partial", "none".
    const char* word() const;
    static SandboxState of(std::vector<std::string> missing);
};

/// What this kernel offers, without entering it.
SandboxState sandboxHere();

/// Shuts the calling process in: no new privileges, no capabilities but that of reading files of others, the
/// file system as `reach` says, system calls as forbidSystemCalls() says. There is no way back. While the
/// process has one thread.
SandboxState enterSandbox(const Reach& reach);

/// What every program that draws needs to read: libraries, fonts and their settings, the kernel's tables of
/// the machine, the graphics drivers with their devices. Measured with strace; paths that a machine does not
/// have allow nothing. The user's own fonts are part of it, the rest of the home is not.
Reach reachOfLibraries();

/// What a download needs besides: names of hosts, authorities of certificates, connections.
Reach reachOfNetwork();

}  // namespace platform
