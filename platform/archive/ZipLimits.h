#pragma once

#include <cstdint>

#include "platform/base/Limits.h"

namespace platform {

/// How much an archive may ask for. An archive beyond any of these is refused before anything of it is
/// unpacked.
struct ZipLimits {
    uint64_t maxArchiveBytes = limitOf("maxArchiveBytes");
    uint64_t maxEntries = limitOf("maxEntries");
    uint64_t maxEntryBytes = limitOf("maxEntryBytes");
    uint64_t maxTotalBytes = limitOf("maxTotalBytes");
    uint64_t maxRatio = limitOf("maxRatio");
    uint64_t ratioFreeBytes = limitOf("ratioFreeBytes");
    uint64_t maxNameBytes = limitOf("maxNameBytes");
    uint64_t maxComponentBytes = limitOf("maxComponentBytes");
    uint64_t maxDepth = limitOf("maxDepth");
};

}  // namespace platform
