// The texts that users read, in their language.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace multiscene {

/// The text of a key in the user's language, else in English, else `fallback`. Any thread.
std::string localizedString(std::string_view key, std::string_view fallback = {});

/// The text of a key in "en", "zh" or "ja", else in English, else `fallback`. Any thread.
std::string localizedStringIn(const std::string& language, std::string_view key,
                              std::string_view fallback = {});

/// "chinese", "japanese" or "english": how records name the user's language.
std::string languageWord();

/// The languages that the program speaks.
inline constexpr std::array kLanguages{"en", "zh", "ja"};

/// "zh", "ja" or "en": the first of LC_ALL, LC_MESSAGES and LANG that is set decides.
std::string userLanguage();

/// Replaces the language found in the environment; empty goes back to it.
void setUserLanguage(const std::string& language);

}  // namespace multiscene
