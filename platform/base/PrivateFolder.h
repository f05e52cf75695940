// Folders for what only their owner may see.
#pragma once

#include <filesystem>

namespace platform {

/// Makes a folder that others can neither enter nor list, and whose files are the owner's alone whoever makes
/// them, where the file system keeps such rules. Throws Error when it is there or cannot be made.
void makePrivateFolder(const std::filesystem::path& folder);

/// A folder for what belongs into the data home while that cannot be written: the same for each of the user's
/// programs, below the temporary folder. Throws Error when somebody else has put something in its place.
std::filesystem::path privateTemporaryFolder();

/// Gives a file, or a folder but not what is in it, that moves out of a private folder the permissions of
/// every other new one. Failing is harmless: it stays the owner's alone.
void makeUsuallyReadable(const std::filesystem::path& path);

}  // namespace platform
