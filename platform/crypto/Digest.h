#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// SHA-256 of a file's content, as 64 hexadecimal digits. Throws Error when it cannot be read.
std::string fileDigest(const std::filesystem::path& file);

}  // namespace platform
