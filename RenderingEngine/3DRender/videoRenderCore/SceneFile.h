#pragma once

#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// A scene or scene-group file, read through the fence. Throws Error(Template) when there is no such file,
/// when it lies outside the fence, and when it is no property list; Transient when the machine does not
/// manage to read it. Any thread.
platform::Value readSceneFile(const std::string& path);

/// The same for the render path: a file that is missing or no scene is empty, and listed in the report.
platform::Value sceneFileOrEmpty(const std::string& path);

}  // namespace multiscene
