// Exchanging two folders in one step, and telling afterwards whether it happened.
#pragma once

#include <filesystem>
#include <string>

namespace multiscene {

enum class SwapMethod {
    InOneStep,  ///< one system call where the file system knows it, else as below
    ByRenames,  ///< three renames; settleSwap() completes or undoes what a killed process left
};

/// Exchanges two folders of one file system. Either may be missing: then the other one moves. Doing it twice
/// changes nothing. Throws platform::Error; nothing has moved then.
void swapFolders(const std::filesystem::path& folder, const std::filesystem::path& other,
                 SwapMethod method = SwapMethod::InOneStep);

/// Brings a swap that was interrupted between its renames to one of its two ends. Throws platform::Error.
void settleSwap(const std::filesystem::path& folder, const std::filesystem::path& other);

/// What stays the same about a folder when it moves within its file system; empty when there is none. Throws
/// platform::Error when that cannot be told.
std::string folderIdentity(const std::filesystem::path& folder);

/// Makes renames in a folder survive a loss of power. Does nothing where the file system cannot.
void syncFolder(const std::filesystem::path& folder);

/// Makes every file below a folder survive a loss of power, in one step however many there are. Throws
/// platform::Error when the disk does not take them.
void syncFilesBelow(const std::filesystem::path& folder);

}  // namespace multiscene
