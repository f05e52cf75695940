// Where things live: the data home (the user's Library and Documents folders are both it) and the program's
// own resources. Set once at start-up, read from any thread afterwards.
#pragma once

#include <filesystem>
#include <string>

namespace platform {

/// --home, else MULTISCENE_HOME, else $XDG_DATA_HOME/multiscene, else ~/.local/share/multiscene; without HOME
/// a folder of the user's own below the temporary one, which is made. Absolute. Throws Error.
std::filesystem::path defaultDataHome();
void setDataHome(const std::filesystem::path& home);
const std::filesystem::path& dataHome();

/// The folder with the program's shaders and string tables: MULTISCENE_RESOURCES, else the installed
/// share/multiscene beside the program's bin folder. Throws Error(Failed) when there is none.
const std::filesystem::path& resourcesFolder();

/// A name that no other call, process or machine start gives.
std::string uniqueIdentifier();

}  // namespace platform
