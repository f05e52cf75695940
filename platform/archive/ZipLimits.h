#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/Limits.h"

namespace platform {

/// How much an archive may ask for. An archive beyond any of these is refused before anything of it is
/// unpacked.
struct ZipLimits {
    uint64_t maxArchiveBytes = uint64_t(2) << 30;
    uint64_t maxEntries = 10'000;
    uint64_t maxEntryBytes = uint64_t(1) << 30;
    uint64_t maxTotalBytes = uint64_t(4) << 30;
    uint64_t maxRatio = 200;
    uint64_t ratioFreeBytes = uint64_t(1) << 20;
    uint64_t maxNameBytes = 1024;
    uint64_t maxComponentBytes = 255;
    uint64_t maxDepth = 32;
};

std::vector<LimitRow> zipLimitRows(const ZipLimits& limits = {});

}  // namespace platform
