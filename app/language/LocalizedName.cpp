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

std::string nameInUserLanguage(const Value& name) {
    if (!name.isDictionary()) return name.stringValue();
    const std::string word = languageWord();
    const char* own = word == "chinese" ? "cName" : word == "japanese" ? "jName" : "eName";
    for (const char* key : {own, "eName", "cName", "jName"})
        if (std::string text = name.string(key); !text.empty()) return text;
    return {};
}

}  // namespace multiscene
