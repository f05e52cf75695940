#pragma once

#include <filesystem>
#include <string>

namespace multiscene::studio {

/// The key in a file that only its owner may read, which is made when it is not there. Throws
/// platform::Error.
std::string keyOf(const std::filesystem::path& file);

}  // namespace multiscene::studio
