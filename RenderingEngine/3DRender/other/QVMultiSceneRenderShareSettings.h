// The playing group's user values and folders, and the look-ups through them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Value.h"

namespace multiscene {

/// One instance for the process. Set by the player when a group is loaded, read while the group plays: both
/// on the render queue.
class QVMultiSceneRenderShareSettings {
  public:
    static QVMultiSceneRenderShareSettings& shared();

    /// The user's value under key + identifier, or under the key alone when the identifier is empty; none
    /// when there is no such value. A key with an identifier never falls back to the key alone.
    static platform::Value computeUserMap(const std::string& key, const std::string& sceneIdentifier);

    /// The user's value that a text names; the value itself when it is no text or names none.
    static platform::Value valueOrUsers(const platform::Value& value, const std::string& sceneIdentifier);

    /// The path behind `text`: the user's value of that key when there is one, else `text` itself; resolved
    /// with multiSceneRenderPathResourcesWithString. Empty when it resolves to nothing.
    static std::string computeFilePathUserMap(const std::string& text, const std::string& sceneIdentifier,
                                              const std::string& sceneResourceFolderPath);

    /// "startFps" and "endFps" of a "FpsInfo" dictionary, both inclusive frames. Text names a value of the
    /// user; where there is none, the text's own number counts. Missing: 0 and INT64_MAX.
    static void computeStartAndEndFps(const platform::Value& fpsInfo, const std::string& sceneIdentifier,
                                      int64_t& startFps, int64_t& endFps);

    /// Expands the macros of scene files: "$(currentScenePlistROOT)" is the scene folder given, joined
    /// without a separator, the two group macros are the folders below; everything else, and everything when
    /// no scene folder is given, goes to QVUtil::multiScenePathWithString.
    static std::string multiSceneRenderPathResourcesWithString(const std::string& path,
                                                               const std::string& currentSceneFolderPath);

    /// Every macro that multiSceneRenderPathResourcesWithString expands.
    static std::vector<std::string_view> pathMacros();

    const platform::Value& userMediaMapDic() const { return userMediaMapDic_; }
    void setUserMediaMapDic(platform::Value map) { userMediaMapDic_ = std::move(map); }
    const std::string& bgAudioPath() const { return bgAudioPath_; }
    void setBgAudioPath(std::string path) { bgAudioPath_ = std::move(path); }
    /// The folder of the scene-group file; joined without a separator, so it ends in "/".
    const std::string& currentSceneGroupPlistPathFloder() const { return groupFolder_; }
    void setCurrentSceneGroupPlistPathFloder(std::string folder) { groupFolder_ = std::move(folder); }
    /// The folder of the user's own files for this group; ends in "/".
    const std::string& currentSceneGroupUserResourcePathFloder() const { return userResourceFolder_; }
    void setCurrentSceneGroupUserResourcePathFloder(std::string folder) {
        userResourceFolder_ = std::move(folder);
    }

  private:
    QVMultiSceneRenderShareSettings() = default;

    platform::Value userMediaMapDic_;
    std::string bgAudioPath_, groupFolder_, userResourceFolder_;
};

}  // namespace multiscene
