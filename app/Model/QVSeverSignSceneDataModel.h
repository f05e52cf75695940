#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// One template that the template server offers. Glossary: "Sever" is server.
class QVSeverSignSceneDataModel {
  public:
    virtual ~QVSeverSignSceneDataModel() = default;

    static QVSeverSignSceneDataModel severSignSceneDataModelWithDic(const platform::Value& info);
    virtual void copyDataModelFormDic(const platform::Value& info);

    int64_t sId() const { return sId_; }
    /// The name in the user's language.
    std::string sceneName() const;
    /// All three names: "cName", "eName", "jName".
    const platform::Value& muName() const { return muName_; }
    /// Lowest version of the program that can render the template, as a decimal number.
    float minVersion() const { return minVersion_; }
    /// Where the archive is; absolute, or relative to the server's base address.
    const std::string& templateUrl() const { return templateUrl_; }
    const std::string& thumbUrl() const { return thumbUrl_; }
    const std::string& videoPreviewUrl() const { return videoPreviewUrl_; }
    const std::string& youtubePreviewUrl() const { return youtubePreviewUrl_; }
    /// Size of the archive as shown to the user, in megabytes.
    float templateSize() const { return templateSize_; }
    /// SHA-256 of the archive, as hexadecimal digits; empty where the server does not say.
    const std::string& archiveDigest() const { return archiveDigest_; }
    bool isNew() const { return isNew_; }
    /// Frames of its video and photos that it asks for; 0 where the server does not say.
    int64_t fpsLength() const { return fpsLength_; }
    int64_t photoTotal() const { return photoTotal_; }

  private:
    int64_t sId_ = 0, fpsLength_ = 0, photoTotal_ = 0;
    platform::Value muName_;
    float minVersion_ = 0, templateSize_ = 0;
    std::string templateUrl_, thumbUrl_, videoPreviewUrl_, youtubePreviewUrl_, archiveDigest_;
    bool isNew_ = false;
};

}  // namespace multiscene
