// The one judgement of what is played: of `check`, and of every job before it draws.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "app/check/Finding.h"
#include "app/template/TemplateFolder.h"
#include "group/SceneCatalogue.h"
#include "platform/base/Value.h"
#include "playback/Playback.h"

namespace multiscene {

struct Judgement {
    Findings findings;
    /// The content of every scene file that could be read, by its path, so that nobody parses it again.
    std::map<std::string, platform::Value> scenes;
};

/// Never throws for faults of the files: they are findings. Files are found and opened as `playback` does:
/// its gate is open for them, and a template's folder lies in its scene folder. Scenes that the group names
/// and the template does not bring are looked up in `others`; null: nowhere. Makes a GL context of its own
/// where a scene brings shaders. Any thread.
Judgement judgeTemplate(const TemplateFolder& folder, SceneCatalogue* others, Playback& playback);
/// `content` of a scene-group file, its scenes looked up in `catalogue`; null: they are not judged.
Judgement judgeSceneGroup(const std::string& file, const platform::Value& content, SceneCatalogue* catalogue,
                          Playback& playback);
/// `content` of a scene file on its own, whose resources lie beside it.
Judgement judgeSceneFile(const std::string& file, const platform::Value& content, Playback& playback);

}  // namespace multiscene
