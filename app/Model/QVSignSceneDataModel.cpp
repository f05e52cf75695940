#include "app/Model/QVSignSceneDataModel.h"

#include "app/language/LocalizedName.h"

namespace multiscene {

QVSignSceneDataModel QVSignSceneDataModel::signSceneDataModelWithDic(const platform::Value& info) {
    QVSignSceneDataModel model;
    model.copyDataModelFormDic(info);
    return model;
}

void QVSignSceneDataModel::copyDataModelFormDic(const platform::Value& info) {
    sId_ = info.integer("sId");
    scenePlistPath_ = info.string("scenePlistPath");
    sceneResourceFolderPath_ = info.string("sceneResourceFolderPath");
    sceneThumbnailPath_ = info.string("sceneThumbnailPath");
    photoTotal_ = info.integer("photoTotal");
    fpsLength_ = info.integer("fpsLength");
    sourceType_ = info.integer("sourceType");
    videoPreviewUrl_ = info.string("videoPreviewUrl");
    youtubePreviewUrl_ = info.string("youtubePreviewUrl");
    sceneName_ = namesOf(info);
}

std::string QVSignSceneDataModel::sceneName() const { return nameInUserLanguage(sceneName_); }

}  // namespace multiscene
