#pragma once

#include <functional>

#include "app/Model/MediaFormat.h"
#include "app/Model/QVSeverSignSceneDataModel.h"
#include "app/Model/UserInputList.h"

namespace multiscene {

/// A question with two answers, in the user's language.
struct AlertView {
    std::string message, ok, cancel;
};

/// A template of the server with what its input description says.
class QVSeverTempletDataModel : public QVSeverSignSceneDataModel {
  public:
    static QVSeverTempletDataModel severTempletDataModelWithDic(const platform::Value& info);
    void copyDataModelFormDic(const platform::Value& info) override;

    int64_t PIPTempletType() const { return PIPTempletType_; }
    const MediaFormat& mediaFormat() const { return mediaFormat_; }
    const UserInputList& userInputInfo() const { return userInputInfo_; }

    /// Whether this program can render the template.
    bool isVersionSupported() const;

    /// True when the program is new enough. Otherwise shows the alert "Updated version", whose answer goes to
    /// alertView().
    using ShowAlert = std::function<void(const AlertView&)>;
    bool checkShowTemplateVersionSupport(const ShowAlert& show) const;

    /// The answer to the alert, 0 for cancel and 1 for OK: OK shows where a newer program is found.
    static void alertView(int clickedButtonAtIndex, const std::function<void()>& openStorePage);

  private:
    int64_t PIPTempletType_ = 0;
    MediaFormat mediaFormat_;
    UserInputList userInputInfo_;
};

}  // namespace multiscene
