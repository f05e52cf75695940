// Writes the scene-group file that the player plays.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "other/SceneCatalogue.h"
#include "platform/base/Value.h"

namespace multiscene {

/// Glossary: "Grop" is group, "tansitions" is transition. One writer a file: filled, then committed once. Not
/// for use from several threads.
class QVMultiSceneGropPlistFileManager {
  public:
    /// `catalogue` knows the scenes' lengths, and outlives the writer.
    QVMultiSceneGropPlistFileManager(std::string plistPath, SceneCatalogue& catalogue)
        : plistPath_(std::move(plistPath)), catalogue_(catalogue) {}

    /// Appends a scene that is played by a hard cut and looks its values up under key + identifier.
    void addSceneWithId(int64_t sceneId, const std::string& sceneIdentifier);

    /// Appends a scene that may end in a transition. Such an entry carries no scene identifier for the
    /// player, so the scene looks its values up under the key alone. A transition scene id below 1 writes no
    /// transition; `sceneTansitionsFps` is its length in frames, the type is 0, 1 or 2.
    void addSceneWithId(int64_t sceneId, const std::string& sceneIdentifier, int64_t tansitionsSceneId,
                        int64_t sceneTansitionsFps, int64_t sceneTansitionsType);

    /// Stores a value under key + identifier.
    void addObjectToUserMap(platform::Value value, const std::string& key,
                            const std::string& sceneIdentifier);

    /// Frames of the whole group: each scene's catalogue length (or the user's video's), less the transitions
    /// of type 0, during which two scenes overlap. Saturates at 32 bits.
    int32_t computeTotalFps() const;

    /// The file's content as it stands.
    platform::Value groupDictionary() const;

    /// Writes the file, replacing an earlier one. Throws platform::Error.
    void commit() const;

    const std::string& plistPath() const { return plistPath_; }
    const platform::Value::Array& sceneDataArray() const { return sceneDataArray_; }
    const platform::Value::Dictionary& userMediaMap() const { return userMediaMap_; }

  private:
    std::string plistPath_;
    SceneCatalogue& catalogue_;
    platform::Value::Array sceneDataArray_;
    platform::Value::Dictionary userMediaMap_;
};

/// computeTotalFps of a file that already exists: its "scene" and "userMediaMap".
int32_t totalFpsOfSceneGroup(const platform::Value::Array& scenes, const platform::Value& userMediaMap,
                             SceneCatalogue& catalogue);

}  // namespace multiscene
