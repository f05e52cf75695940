#include "studio/api/Language.h"

#include <sstream>

#include "studio/access/Cookies.h"

namespace multiscene::studio {

namespace {

/// Empty: none of ours.
std::string known(std::string word) {
    word = word.substr(word.find_first_not_of(' ') == std::string::npos ? 0 : word.find_first_not_of(' '));
    for (const char* language : {"en", "zh", "ja"})
        if (platform::http::sameToken(word.substr(0, 2), language) &&
            (word.size() == 2 || word[2] == '-' || word[2] == ';'))
            return language;
    return {};
}

}  // namespace

std::string languageOf(const platform::http::RequestHead& head) {
    if (const auto asked = head.parameter("lang"))
        if (std::string language = known(*asked); !language.empty()) return language;
    if (std::string language = known(cookieOf(head, "language")); !language.empty()) return language;
    std::istringstream accepted(head.header("Accept-Language"));
    for (std::string each; std::getline(accepted, each, ',');)
        if (std::string language = known(each); !language.empty()) return language;
    return "en";
}

}  // namespace multiscene::studio
