// What is played: scenes one after another, and everything that is known of them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "group/SceneCatalogue.h"
#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace multiscene {

/// Collected before a group plays and not changed while it does. Copies share what they hold.
struct SceneGroup {
    struct Scene {
        SceneConfigData record;
        platform::Value content;                              ///< of the scene file; none: not read
        std::optional<platform::Error> fault = std::nullopt;  ///< why it could not be read
    };
    using Scenes = std::map<int64_t, Scene>;

    platform::Value::Array entries;  ///< in playing order, in the form of the scene-group file
    platform::Value userMediaMap;    ///< values by key, or by key followed directly by identifier
    /// By catalogue number: the scenes that the entries name, transition scenes included, as far as the
    /// catalogue has them.
    Scenes scenes;

    /// None when the catalogue has no scene of this number.
    const Scene* scene(int64_t number) const;
    /// "sceneIdentifier" of the entries that have one.
    std::set<std::string> identifiers() const;

    /// When a scene plays, in frames of the whole.
    struct Turn {
        int64_t start = 0, frames = 0;
    };
    /// Of each entry, as totalFrames() counts them.
    std::vector<Turn> turns() const;
    /// Frames of the whole group: each scene's catalogue length (or the user's video's), less the transitions
    /// of type 0, during which two scenes overlap. Saturates at 32 bits; below 1 when the records do not say.
    int32_t totalFrames() const;
    /// Frames that playing it gives: one more than that for each scene whose clock has the number of the
    /// user's frames as its "endFps", which is inclusive. Asks the scenes' files.
    int64_t playedFrames() const;
};

/// The records of all scenes that the entries name, transition scenes included; nothing is read.
SceneGroup::Scenes scenesNamedBy(const platform::Value::Array& entries, SceneCatalogue& catalogue);

}  // namespace multiscene
