#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

/// One file of an archive to be written.
struct ZipSource {
    std::string name;  ///< in the archive, parts separated by "/"
    std::filesystem::path file;
};

/// Writes an archive that appears under its name only when it is complete. The same files give the same
/// bytes: entries are sorted, and carry neither times nor permissions of the machine. Links are not followed.
/// Throws platform::Error.
void writeZip(const std::filesystem::path& archive, std::vector<ZipSource> sources);

}  // namespace platform
