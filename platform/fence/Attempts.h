// Attempts to break out of the fence, for the self-test.
#pragma once

#include <filesystem>
#include <span>
#include <string>

namespace platform {

/// What an attempt aims at; made by the supervisor, outside the worker's reach.
struct BreakOutTargets {
    std::filesystem::path secret;   ///< a file that must not be read
    std::filesystem::path outside;  ///< a folder that must not be written
    std::filesystem::path inside;   ///< the worker's own
    int port = 0;                   ///< where somebody listens on the loopback
};

/// Which wall is in the way; an attempt is expected to fail where it stands.
enum class Wall { Files, SystemCalls, Limits };

struct BreakOutAttempt {
    const char* name;  ///< "read a private key"
    Wall wall;
    /// In the worker: empty when the attempt succeeded, else what kept it from that. May not come back at
    /// all.
    std::string (*run)(const BreakOutTargets& targets);
};

std::span<const BreakOutAttempt> breakOutAttempts();

}  // namespace platform
