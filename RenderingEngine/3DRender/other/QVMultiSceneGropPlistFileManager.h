// Writes and reads the scene-group file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "group/SceneGroup.h"

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

    /// SceneGroup::totalFrames.
    int32_t computeTotalFps() const { return group().totalFrames(); }

    /// The group as it stands; its scene files are not read.
    SceneGroup group() const;

    /// Writes the file, replacing an earlier one. Throws platform::Error.
    void commit() const { write(plistPath_, group()); }

    /// Writes a group as its file. Throws platform::Error.
    static void write(const std::filesystem::path& file, const SceneGroup& group);

    /// The group that a file's content lists; none of its scenes is looked up or read.
    static SceneGroup groupOf(const platform::Value& content);

  private:
    std::string plistPath_;
    SceneCatalogue& catalogue_;
    platform::Value::Array entries_;
    platform::Value::Dictionary userMediaMap_;
};

}  // namespace multiscene
