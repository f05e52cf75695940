#include "studio/store/Names.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "platform/crypto/Secret.h"

namespace multiscene::studio {

namespace {

constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz234567";
constexpr size_t kLength = 26;

}  // namespace

std::string newName(std::string_view prefix) {
    return std::string(prefix) + "_" + platform::randomLetters(kLength);
}

bool isName(std::string_view text, std::string_view prefix) {
    return text.size() == prefix.size() + 1 + kLength && text.starts_with(prefix) &&
           text[prefix.size()] == '_' &&
           text.substr(prefix.size() + 1).find_first_not_of(kLetters) == std::string_view::npos;
}

int64_t nowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string timeText(int64_t ms) {
    const std::time_t seconds = ms / 1000;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                  static_cast<int>(ms % 1000));
    return text;
}

}  // namespace multiscene::studio
