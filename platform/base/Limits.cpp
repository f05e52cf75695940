#include "platform/base/Limits.h"

namespace platform {

std::string beyondLimit(uint64_t count, const std::string& things, uint64_t limit) {
    return "holds " + std::to_string(count) + " " + things + ", more than the " + std::to_string(limit) +
           " that are allowed";
}

}  // namespace platform
