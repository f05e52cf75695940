#pragma once

#include <filesystem>
#include <functional>
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
/// `judge` gets the path of the complete archive before that and may throw. Returns its bytes. Throws
/// platform::Error.
uint64_t writeZip(const std::filesystem::path& archive, std::vector<ZipSource> sources,
                  const std::function<void(const std::filesystem::path& written)>& judge = {});

}  // namespace platform
