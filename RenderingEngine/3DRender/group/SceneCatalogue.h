// How the engine finds scenes by number without knowing the application's catalogue.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace multiscene {

/// What the catalogue knows of one scene. Paths are complete: macros are already expanded.
struct SceneConfigData {
    int64_t sId = -1;
    std::string scenePlistPath;           ///< the scene file
    std::string sceneResourceFolderPath;  ///< ends in "/" when the record was written well
    int64_t fpsLength = 0;                ///< frames; below 1 the scene does not say
    int64_t sourceType = 1;               ///< 7: the length comes from the user's video
    int64_t photoTotal = 0;               ///< photos that the scene asks for
    std::string sceneName;
};

/// Looks scenes up. Implementations are safe from any thread.
class SceneCatalogue {
  public:
    virtual ~SceneCatalogue() = default;

    /// The scene with this catalogue number; nothing when there is none or the catalogue is unusable. Throws
    /// platform::Error when reading it failed for a reason that passes.
    virtual std::optional<SceneConfigData> querySceneWithSid(int64_t sId) = 0;
};

}  // namespace multiscene
