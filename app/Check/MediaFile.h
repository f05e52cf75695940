#pragma once

#include <optional>
#include <string>

#include "app/Check/Finding.h"

namespace multiscene {

/// What a key wants a file to be.
enum class MediaKind { Picture, PvrPicture, Sound, Track };

/// Reads a file of the template as what its key wants. `place` carries file and key path; its text is filled
/// in. Nothing when the file can be read, and nothing when it cannot be opened: judgeFileName tells that.
std::optional<Finding> judgeMediaFile(MediaKind kind, const std::string& path, const std::string& sceneFolder,
                                      Finding place);

/// Whether a picture of the template has pixels that are not opaque; false when it cannot be read.
bool isTransparentPicture(const std::string& path, const std::string& sceneFolder);

}  // namespace multiscene
