#include "app/language/Strings.h"

#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>

#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"

namespace multiscene {

using platform::Value;

namespace {

struct Tables {
    std::mutex mutex;
    std::string language;
    std::map<std::string, Value> byLanguage;
};

Tables& tables() {
    static Tables shared;
    return shared;
}

std::string languageOfEnvironment() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* set = std::getenv(variable);
        if (!set || !*set) continue;
        const std::string_view locale(set);
        for (const char* language : {"zh", "ja"})
            if (locale.starts_with(language)) return language;
        return "en";
    }
    return "en";
}

const std::string& language(Tables& shared) {
    if (shared.language.empty()) shared.language = languageOfEnvironment();
    return shared.language;
}

const Value& table(Tables& shared, const std::string& name) {
    const auto known = shared.byLanguage.find(name);
    if (known != shared.byLanguage.end()) return known->second;
    const auto file = platform::resourcesFolder() / "strings" / (name + ".plist");
    std::error_code ignored;
    const bool translated = std::filesystem::exists(file, ignored);
    const Value content =
        translated ? platform::readPropertyList(file, platform::ErrorKind::Failed) : Value();
    return shared.byLanguage.emplace(name, content).first->second;
}

}  // namespace

std::string localizedStringIn(const std::string& language, std::string_view key, std::string_view fallback) {
    Tables& shared = tables();
    const std::lock_guard lock(shared.mutex);
    for (const std::string& name : {language, std::string("en")})
        if (const Value& text = table(shared, name)[key]) return text.stringValue();
    return std::string(fallback);
}

std::string localizedString(std::string_view key, std::string_view fallback) {
    return localizedStringIn(userLanguage(), key, fallback);
}

std::string languageWord() { return localizedString("localizable"); }

std::string userLanguage() {
    const std::lock_guard lock(tables().mutex);
    return language(tables());
}

void setUserLanguage(const std::string& name) {
    const std::lock_guard lock(tables().mutex);
    tables().language = name;
}

}  // namespace multiscene
