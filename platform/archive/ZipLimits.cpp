#include "platform/archive/ZipLimits.h"

namespace platform {

std::vector<LimitRow> zipLimitRows(const ZipLimits& limits) {
    return {
        {"maxArchiveBytes", limits.maxArchiveBytes, "bytes of the archive itself"},
        {"maxEntries", limits.maxEntries, "files and folders in an archive"},
        {"maxEntryBytes", limits.maxEntryBytes, "bytes of one file, unpacked"},
        {"maxTotalBytes", limits.maxTotalBytes, "bytes of all files together, unpacked"},
        {"maxRatio", limits.maxRatio, "times that a file may grow when it is unpacked"},
        {"ratioFreeBytes", limits.ratioFreeBytes,
         "bytes, unpacked, up to which a file may grow by any ratio"},
        {"maxNameBytes", limits.maxNameBytes, "bytes of a name with its folders"},
        {"maxComponentBytes", limits.maxComponentBytes, "bytes of one file or folder name"},
        {"maxDepth", limits.maxDepth, "folders inside each other"},
    };
}

}  // namespace platform
