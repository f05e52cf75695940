#pragma once

#include <string>

namespace multiscene {

/// Photo slots beyond the photos that the user supplied show the supplied ones again, in turn. For a path
/// ".../fy<n>.…jpg" this is ".../fy<(n mod c) + 1>.jpg", c being the entries of the folder without
/// "fy100.jpg". Any other path, and one whose folder has no photo, comes back unchanged. Says nothing about
/// whether the file exists.
std::string suppliedPhotoForSlot(const std::string& path);

}  // namespace multiscene
