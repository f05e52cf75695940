#include "app/Model/QVTempletDataModel.h"

#include "platform/base/Json.h"

namespace multiscene {

using platform::Value;

QVTempletDataModel QVTempletDataModel::templetDataModelWithDic(const Value& info) {
    QVTempletDataModel model;
    model.copyDataModelFormDic(info);
    return model;
}

void QVTempletDataModel::copyDataModelFormDic(const Value& info) {
    QVSignSceneDataModel::copyDataModelFormDic(info);
    copySelfDataModelFormDic(info["wechartTempletInfo"]);
}

void QVTempletDataModel::copySelfDataModelFormDic(const Value& wechartTempletInfo) {
    wechartTempletInfo_ = wechartTempletInfo.isDictionary() ? wechartTempletInfo : Value();
    PIPTempletType_ = wechartTempletInfo_.integer("PIPTempletType");
    userInputInfo_ = userInputsOf(wechartTempletInfo_);
}

std::string QVTempletDataModel::dataBaseWechartTempletInfo() const {
    if (!storedInfo_.empty()) return storedInfo_;
    return wechartTempletInfo_.isNone() ? std::string() : platform::jsonText(wechartTempletInfo_);
}

}  // namespace multiscene
