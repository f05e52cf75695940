#pragma once

#include <filesystem>

namespace multiscene::cli {

/// Whether there is a desktop that could show something.
bool hasDisplay();

/// Has the desktop open a file, in whatever opens such files. Nothing happens where nobody can.
void openPage(const std::filesystem::path& file);

}  // namespace multiscene::cli
