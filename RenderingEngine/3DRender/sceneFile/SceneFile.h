#pragma once

#include <map>
#include <string>

#include "group/SceneGroup.h"
#include "platform/base/FileGate.h"
#include "platform/base/Value.h"

namespace multiscene {

/// A scene or scene-group file, read through the fence. Throws Error(Template) when there is no such file,
/// when it lies outside the fence, and when it is no property list; Transient when the machine does not
/// manage to read it. Any thread.
platform::Value readSceneFile(const std::string& path, platform::FileGate& gate);

/// Fills in the content of every scene of the group, or why it cannot be read: each file is read once, and
/// not at all when `known` has its content under its path. Throws Error(Transient) as above.
void readScenes(SceneGroup& group, const std::map<std::string, platform::Value>& known,
                platform::FileGate& gate);

}  // namespace multiscene
