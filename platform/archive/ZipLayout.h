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

/// The directory as programs write it that keep the form of large archives for large ones: some write it
/// throughout, and the zip library does not read it there. Empty when there is nothing to change.
std::string directoryInShortForm(const FileHandle& file, const ZipDirectoryPlace& place);

/// The part of the file that an entry takes up, its local header included.
struct ZipExtent {
    uint64_t begin = 0, end = 0;
    bool hasDescriptor = false;  ///< 12 to 24 bytes after the data repeat its sizes
    std::string name;
};

/// Takes an entry of the directory, as far as its name, and reads the local header to which it points.
/// Returns nothing and says why in `fault` when the two are about different files, or lie outside the
/// archive.
std::optional<ZipExtent> findZipEntry(const FileHandle& file, std::string entry, const std::string& name,
                                      uint64_t packedBytes, std::string& fault);
constexpr uint64_t kZipDirectoryEntryBytes = 46;  ///< without its name and further fields

/// Why entries do not fill the archive from its first byte to its directory, each byte belonging to one of
/// them; nothing when they do. `entry` becomes the one at fault.
std::optional<std::string> faultOfZipLayout(std::vector<ZipExtent> extents, uint64_t directoryOffset,
                                            std::string& entry);

}  // namespace platform
