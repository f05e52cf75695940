#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// One scene of the catalogue: a row of the store, or an element of a template's "installScenes".
class QVSignSceneDataModel {
  public:
    virtual ~QVSignSceneDataModel() = default;

    static QVSignSceneDataModel signSceneDataModelWithDic(const platform::Value& info);
    /// Takes over every key of a record; missing ones become 0 or empty.
    virtual void copyDataModelFormDic(const platform::Value& info);

    /// Order of insertion; 0 for a record that is not stored.
    int64_t rowId() const { return rowId_; }
    void setRowId(int64_t rowId) { rowId_ = rowId; }
    int64_t sId() const { return sId_; }
    void setSId(int64_t sId) { sId_ = sId; }
    /// The scene file. With path macros as read from a template, complete as read from the store.
    const std::string& scenePlistPath() const { return scenePlistPath_; }
    void setScenePlistPath(std::string path) { scenePlistPath_ = std::move(path); }
    const std::string& sceneResourceFolderPath() const { return sceneResourceFolderPath_; }
    void setSceneResourceFolderPath(std::string path) { sceneResourceFolderPath_ = std::move(path); }
    const std::string& sceneThumbnailPath() const { return sceneThumbnailPath_; }
    void setSceneThumbnailPath(std::string path) { sceneThumbnailPath_ = std::move(path); }
    int64_t photoTotal() const { return photoTotal_; }
    void setPhotoTotal(int64_t photoTotal) { photoTotal_ = photoTotal; }
    /// Frames.
    int64_t fpsLength() const { return fpsLength_; }
    void setFpsLength(int64_t fpsLength) { fpsLength_ = fpsLength; }
    int64_t sourceType() const { return sourceType_; }
    void setSourceType(int64_t sourceType) { sourceType_ = sourceType; }
    const std::string& videoPreviewUrl() const { return videoPreviewUrl_; }
    void setVideoPreviewUrl(std::string url) { videoPreviewUrl_ = std::move(url); }
    const std::string& youtubePreviewUrl() const { return youtubePreviewUrl_; }
    void setYoutubePreviewUrl(std::string url) { youtubePreviewUrl_ = std::move(url); }

    /// The stored name; of a record with three names the one in the user's language.
    std::string sceneName() const;
    /// A plain string, or a dictionary of "cName", "eName" and "jName".
    void setSceneName(platform::Value name) { sceneName_ = std::move(name); }

  private:
    int64_t rowId_ = 0, sId_ = 0, photoTotal_ = 0, fpsLength_ = 0, sourceType_ = 0;
    std::string scenePlistPath_, sceneResourceFolderPath_, sceneThumbnailPath_;
    std::string videoPreviewUrl_, youtubePreviewUrl_;
    platform::Value sceneName_;
};

}  // namespace multiscene
