#include "app/Model/LocalizedName.h"

#include "app/Other/Strings.h"

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
    return name.string(word == "chinese" ? "cName" : word == "japanese" ? "jName" : "eName");
}

}  // namespace multiscene
