// The playing group's user values and folders, and the look-ups through them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "other/QVUtil.h"
#include "platform/base/Value.h"

namespace multiscene {

/// One a video. Filled before the group plays, not changed while it does.
class QVMultiSceneRenderShareSettings {
  public:
    /// Those of nobody: no values, the folders of the data home.
    static const QVMultiSceneRenderShareSettings& none();

    /// The user's value under key + identifier, or under the key alone when the identifier is empty; none
    /// when there is no such value. A key with an identifier never falls back to the key alone.
    platform::Value computeUserMap(const std::string& key, const std::string& sceneIdentifier) const;

    /// The user's value that a text names; the value itself when it is no text or names none.
    platform::Value valueOrUsers(const platform::Value& value, const std::string& sceneIdentifier) const;

    /// The path behind `text`: the user's value of that key when there is one, else `text` itself; resolved
    /// with multiSceneRenderPathResourcesWithString. Empty when it resolves to nothing.
    std::string computeFilePathUserMap(const std::string& text, const std::string& sceneIdentifier,
                                       const std::string& sceneResourceFolderPath) const;

    /// "startFps" and "endFps" of a "FpsInfo" dictionary, both inclusive frames. Text names a value of the
    /// user; where there is none, the text's own number counts. Missing: 0 and INT64_MAX.
    void computeStartAndEndFps(const platform::Value& fpsInfo, const std::string& sceneIdentifier,
                               int64_t& startFps, int64_t& endFps) const;

    /// Expands the macros of scene files: "$(currentScenePlistROOT)" is the scene folder given, joined
    /// without a separator, the two group macros are the folders below; everything else, and everything when
    /// no scene folder is given, goes to QVUtil::multiScenePathWithString.
    std::string multiSceneRenderPathResourcesWithString(const std::string& path,
                                                        const std::string& currentSceneFolderPath) const;

    /// Every macro that multiSceneRenderPathResourcesWithString expands.
    static std::vector<std::string_view> pathMacros();

    const platform::Value& userMediaMapDic() const { return userMediaMapDic_; }
    void setUserMediaMapDic(platform::Value map) { userMediaMapDic_ = std::move(map); }
    /// The folder of the scene-group file; joined without a separator, so it ends in "/".
    const std::string& currentSceneGroupPlistPathFloder() const { return groupFolder_; }
    void setCurrentSceneGroupPlistPathFloder(std::string folder) { groupFolder_ = std::move(folder); }
    /// The folder of the user's own files for this group; ends in "/".
    const std::string& currentSceneGroupUserResourcePathFloder() const { return userResourceFolder_; }
    void setCurrentSceneGroupUserResourcePathFloder(std::string folder) {
        userResourceFolder_ = std::move(folder);
    }

    /// What "$(multiSceneSceneROOT)" stands for: the data home's folder unless set; ends in "/". A template
    /// that plays from where it lies has its parent there.
    const std::string& scenePath() const { return scenePath_; }
    void setScenePath(const std::string& folder);

  private:
    const std::string* rootOf(std::string_view component, const std::string& sceneFolder) const;

    platform::Value userMediaMapDic_;
    std::string groupFolder_, userResourceFolder_, scenePath_ = QVUtil::scenePath();
};

}  // namespace multiscene
