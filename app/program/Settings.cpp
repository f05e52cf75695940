#include "app/program/Settings.h"

#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"

namespace multiscene {

using platform::Value;

namespace {

std::filesystem::path settingsFile() { return platform::dataHome() / "settings.json"; }

Value settings() {
    const std::filesystem::path file = settingsFile();
    if (!platform::isThere(file)) return Value::Dictionary();
    const auto bytes = platform::readFile(file, platform::limitOf("maxSettingsBytes"));
    return platform::parseJson({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, file.string(),
                               platform::ErrorKind::Failed);
}

}  // namespace

std::string settingWithKey(const std::string& key) { return settings().string(key); }

void saveSetting(const std::string& key, const std::string& value) {
    platform::createFolders(platform::dataHome());
    platform::writeFileAtomically(settingsFile(),
                                  platform::jsonText(settings().with(key, Value(value))) + "\n");
}

}  // namespace multiscene
