#include "app/Model/QVUserInputModelBase.h"

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/Other/Strings.h"

namespace multiscene {

QVUserInputModelBase::QVUserInputModelBase(const platform::Value& info)
    : userInputType_(info.integer("userInputType")),
      renderMapKey_(info.string("renderMapKey")),
      placeholder_(info.string(languageWord() + "Placeholder")) {}

std::shared_ptr<const QVUserInputModelBase> QVUserInputModelBase::inputModelWithDic(
    const platform::Value& info) {
    if (!info.isDictionary()) return nullptr;
    switch (info.integer("userInputType")) {
        case 0:
            return std::make_shared<QVUserTextInputModel>(info);
        case 1:
            return std::make_shared<QVUserPhotoInputModel>(info);
        case 3:
            return std::make_shared<QVUserVideoInputModel>(info);
        default:
            return nullptr;
    }
}

}  // namespace multiscene
