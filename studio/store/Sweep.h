#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

namespace multiscene::studio {

/// Removes a file or a folder with all in it; what cannot be removed is removed at the next start.
void removeQuietly(const std::filesystem::path& path);

/// Removes everything in a folder whose name `isKnown` does not know, and that is at least so old.
void removeUnknown(const std::filesystem::path& folder,
                   const std::function<bool(const std::string& name)>& isKnown,
                   std::chrono::seconds age = std::chrono::seconds(0));

}  // namespace multiscene::studio
