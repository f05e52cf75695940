// What a user has set once for a data home: settings.json, an object of texts.
#pragma once

#include <string>

namespace multiscene {

/// Base address of the template server.
inline constexpr const char* kServerSetting = "server";

/// Empty when it is not set. Throws platform::Error(Failed) when the file cannot be read.
std::string settingWithKey(const std::string& key);

/// Keeps every other setting. Throws platform::Error.
void saveSetting(const std::string& key, const std::string& value);

}  // namespace multiscene
