// Which files a played or judged group may open.
#pragma once

#include <filesystem>

#include "platform/base/Value.h"
#include "playback/Playback.h"

namespace multiscene {

/// Opens the gate for the home's own folders: scenes, templates and the user's resources.
void openHomeFolders(platform::FileGate& gate);

/// Opens the gate for what a scene-group file in `folder` names: the files beside it, the templates of the
/// home, and the files of its own map, which are the user's. The macros of the group stand for `folder`.
void openSceneGroupFiles(const std::filesystem::path& folder, const platform::Value& userMediaMap,
                         Playback& playback);

}  // namespace multiscene
