#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/Check/Finding.h"
#include "platform/base/FileGate.h"

namespace multiscene {

/// Judges a path of a scene file: whether it resolves to anything, and whether the gate opens it. `place`
/// carries file and key path; its text is filled in. Nothing when all is well.
std::optional<Finding> judgeFileName(const std::string& path, const std::string& sceneFolder, Finding place);

/// Throws platform::Error when the file is not what its key wants.
using RequireContent = std::function<void(platform::FileHandle, const std::string& name)>;

/// Judges what is in the file; one that cannot be opened is judgeFileName()'s.
std::optional<Finding> judgeFileContent(const std::string& path, const std::string& sceneFolder,
                                        const RequireContent& require, Finding place);

/// A picture of any format that "image" takes; a PVR texture.
void requirePicture(platform::FileHandle file, const std::string& name);
void requirePvr(platform::FileHandle file, const std::string& name);

}  // namespace multiscene
