#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace platform {

/// What of the file system a worker reaches.
struct Reach {
    std::vector<std::filesystem::path> read;     ///< files, and folders with everything below them
    std::vector<std::filesystem::path> write;    ///< folders: files and folders may be made, changed, removed
    std::vector<std::filesystem::path> devices;  ///< read, written and told with ioctl, as a GPU is
    bool network = false;                        ///< connections to others; none are taken from them

    /// Permissions and attributes may be changed, of every file of the user's: no rule knows folders there.
    bool attributes = false;

    void add(const Reach& other);
};

/// The version of the kernel's Landlock; 0 when there is none.
int landlockVersion();

/// Confines the calling thread, and those it starts, to `reach`: other files cannot be opened, linked or
/// listed; TCP, the abstract sockets of others and signals to others go where the version knows them. Links,
/// devices, sockets and named pipes cannot be made anywhere. Paths that do not exist allow nothing. Returns
/// what does not hold, empty when all does. The process has given up new privileges before.
std::string confineWithLandlock(const Reach& reach);

}  // namespace platform
