#include "app/language/LocalizedName.h"

#include "app/language/Strings.h"

namespace multiscene {

using platform::Value;

Value namesOf(const Value& record) {
    Value::Dictionary names;
    for (const char* key : {"cName", "eName", "jName"})
        if (record.has(key)) names[key] = record[key];
    return names;
}

std::string nameInLanguage(const Value& name, std::string_view language) {
    if (!name.isDictionary()) return name.stringValue();
    const char* own = language == "zh" ? "cName" : language == "ja" ? "jName" : "eName";
    for (const char* key : {own, "eName", "cName", "jName"})
        if (std::string text = name.string(key); !text.empty()) return text;
    return {};
}

Value nameInEachLanguage(const Value& name) {
    Value::Dictionary names;
    for (const char* language : kLanguages) names[language] = nameInLanguage(name, language);
    return names;
}

std::string nameInUserLanguage(const Value& name) { return nameInLanguage(name, userLanguage()); }

}  // namespace multiscene
