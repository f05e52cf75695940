#include "app/Model/QVUserInputModelBase.h"

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/language/Strings.h"

namespace multiscene {

namespace {

/// "english", as the keys of records begin.
std::string wordOf(std::string_view language) {
    return language == "zh" ? "chinese" : language == "ja" ? "japanese" : "english";
}

std::string placeholderIn(std::string_view language, const platform::Value& info) {
    for (const std::string& word :
         {wordOf(language), std::string("english"), std::string("chinese"), std::string("japanese")})
        if (std::string text = info.string(word + "Placeholder"); !text.empty()) return text;
    return {};
}

platform::Value placeholdersOf(const platform::Value& info) {
    platform::Value::Dictionary all;
    for (const char* language : kLanguages) all[language] = placeholderIn(language, info);
    return all;
}

}  // namespace

QVUserInputModelBase::QVUserInputModelBase(const platform::Value& info)
    : userInputType_(info.integer("userInputType")),
      renderMapKey_(info.string("renderMapKey")),
      placeholders_(placeholdersOf(info)) {}

std::string QVUserInputModelBase::placeholder() const {
    const std::string language = userLanguage();
    return placeholders_.string(placeholders_.has(language) ? language : "en");
}

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
