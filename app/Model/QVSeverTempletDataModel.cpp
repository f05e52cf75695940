#include "app/Model/QVSeverTempletDataModel.h"

#include "app/language/Strings.h"
#include "app/program/ProgramVersion.h"

namespace multiscene {

QVSeverTempletDataModel QVSeverTempletDataModel::severTempletDataModelWithDic(const platform::Value& info) {
    QVSeverTempletDataModel model;
    model.copyDataModelFormDic(info);
    return model;
}

void QVSeverTempletDataModel::copyDataModelFormDic(const platform::Value& info) {
    QVSeverSignSceneDataModel::copyDataModelFormDic(info);
    const platform::Value& description = info["wechartTempletInfo"];
    PIPTempletType_ = description.integer("PIPTempletType");
    mediaFormat_ = mediaFormatOf(description);
    userInputInfo_ = userInputsOf(description);
}

bool QVSeverTempletDataModel::isVersionSupported() const { return minVersion() <= programVersionNumber(); }

bool QVSeverTempletDataModel::checkShowTemplateVersionSupport(const ShowAlert& show) const {
    if (isVersionSupported()) return true;
    show({localizedString("Updated version"), localizedString("alertOk"), localizedString("alertCancel")});
    return false;
}

void QVSeverTempletDataModel::alertView(int clickedButtonAtIndex,
                                        const std::function<void()>& openStorePage) {
    if (clickedButtonAtIndex == 1) openStorePage();
}

}  // namespace multiscene
