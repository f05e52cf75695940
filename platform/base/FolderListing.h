#pragma once

#include <filesystem>
#include <vector>

namespace platform {

/// What lies in a folder, in no order; nothing where there is none. Throws Error when the disk does not say.
std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder);

}  // namespace platform
