#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/File.h"

namespace platform {

/// Where the directory of an archive lies, as the record at its end says.
struct ZipDirectoryPlace {
    uint64_t offset = 0, bytes = 0;
};

/// Judges the end of an archive: a whole end record with its comment, directly behind the directory that it
/// names, on one disk. Returns nothing and says why in `fault` otherwise: what is cut off, or has something
/// put before it, so that the stated places are not the true ones.
std::optional<ZipDirectoryPlace> findZipDirectory(const FileHandle& file, std::string& fault);

/// The part of the file that an entry takes up, its local header included.
struct ZipExtent {
    uint64_t begin = 0, end = 0;
    bool hasDescriptor = false;  ///< 12 to 24 bytes after the data repeat its sizes
    std::string name;
};

/// Reads the entry of the directory at `directoryEntry` and the local header to which it points. Returns
/// nothing and says why in `fault` when the two are about different files, or lie outside the archive.
std::optional<ZipExtent> findZipEntry(const FileHandle& file, uint64_t directoryEntry,
                                      const std::string& name, uint64_t packedBytes, std::string& fault);

/// Why entries do not fill the archive from its first byte to its directory, each byte belonging to one of
/// them; nothing when they do. `entry` becomes the one at fault.
std::optional<std::string> faultOfZipLayout(std::vector<ZipExtent> extents, uint64_t directoryOffset,
                                            std::string& entry);

}  // namespace platform
