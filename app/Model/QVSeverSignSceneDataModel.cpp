#include "app/Model/QVSeverSignSceneDataModel.h"

#include "app/language/LocalizedName.h"

namespace multiscene {

QVSeverSignSceneDataModel QVSeverSignSceneDataModel::severSignSceneDataModelWithDic(
    const platform::Value& info) {
    QVSeverSignSceneDataModel model;
    model.copyDataModelFormDic(info);
    return model;
}

void QVSeverSignSceneDataModel::copyDataModelFormDic(const platform::Value& info) {
    sId_ = info.integer("sId");
    muName_ = namesOf(info);
    minVersion_ = info.real("minVersion");
    templateUrl_ = info.string("templateUrl");
    thumbUrl_ = info.string("thumbUrl");
    videoPreviewUrl_ = info.string("videoPreviewUrl");
    youtubePreviewUrl_ = info.string("youtubePreviewUrl");
    templateSize_ = info.real("templateSize");
    isNew_ = info.boolean("isNew");
    archiveDigest_ = info.string("templateSha256");
    fpsLength_ = info.integer("fpsLength");
    photoTotal_ = info.integer("photoTotal");
}

std::string QVSeverSignSceneDataModel::sceneName() const { return nameInUserLanguage(muName_); }

}  // namespace multiscene
