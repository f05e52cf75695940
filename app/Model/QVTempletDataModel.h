#pragma once

#include "app/Model/MediaFormat.h"
#include "app/Model/QVSignSceneDataModel.h"
#include "app/Model/UserInputList.h"

namespace multiscene {

/// A catalogue record with the description of what its user must supply. Glossary: "templet" is template.
class QVTempletDataModel : public QVSignSceneDataModel {
  public:
    static QVTempletDataModel templetDataModelWithDic(const platform::Value& info);

    void copyDataModelFormDic(const platform::Value& info) override;
    /// Takes over an input description, as read from a record or from the store's JSON.
    void copySelfDataModelFormDic(const platform::Value& wechartTempletInfo);

    /// The whole input description, none when the record has none.
    const platform::Value& wechartTempletInfo() const { return wechartTempletInfo_; }
    /// The input description as the store keeps it: JSON, or '' when there is none.
    std::string dataBaseWechartTempletInfo() const;
    /// That JSON as it was made elsewhere, to be stored unread; the description itself stays unknown.
    void setDataBaseWechartTempletInfo(std::string json) { storedInfo_ = std::move(json); }

    int64_t PIPTempletType() const { return PIPTempletType_; }
    const UserInputList& userInputInfo() const { return userInputInfo_; }
    MediaFormat mediaFormat() const { return mediaFormatOf(wechartTempletInfo_); }
    /// Scene entries in the form of the scene-group file; empty: the template's own scene alone.
    const platform::Value::Array& sceneGroup() const { return wechartTempletInfo_.array("sceneGroup"); }
    /// Path with macros of the background music; empty: "bg-audio.mp3" in the template's folder, if it is
    /// there.
    std::string bgAudioPath() const { return wechartTempletInfo_.string("bgAudioPath"); }

  private:
    platform::Value wechartTempletInfo_;
    std::string storedInfo_;
    int64_t PIPTempletType_ = 0;
    UserInputList userInputInfo_;
};

}  // namespace multiscene
