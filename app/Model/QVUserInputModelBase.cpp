#include "app/Model/QVUserInputModelBase.h"

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/language/Strings.h"

namespace multiscene {

namespace {

std::string placeholderOf(const platform::Value& info) {
    for (const std::string& word :
         {languageWord(), std::string("english"), std::string("chinese"), std::string("japanese")})
        if (std::string text = info.string(word + "Placeholder"); !text.empty()) return text;
    return {};
}

}  // namespace

QVUserInputModelBase::QVUserInputModelBase(const platform::Value& info)
    : userInputType_(info.integer("userInputType")),
      renderMapKey_(info.string("renderMapKey")),
      placeholder_(placeholderOf(info)) {}

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
