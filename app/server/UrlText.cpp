#include "app/server/UrlText.h"

#include <charconv>
#include <string_view>

namespace multiscene {

std::string percentDecoded(const std::string& text) {
    std::string result;
    for (size_t index = 0; index < text.size(); ++index) {
        unsigned code = 0;
        const char* digits = text.data() + index + 1;
        const bool escaped = text[index] == '%' && index + 2 < text.size() &&
                             std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2;
        result += escaped ? static_cast<char>(code) : text[index];
        if (escaped) index += 2;
    }
    return result;
}

std::string percentEncoded(const std::string& path) {
    static constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    static constexpr const char* digits = "0123456789ABCDEF";
    std::string result;
    for (const char letter : path) {
        const auto byte = static_cast<unsigned char>(letter);
        if (plain.find(letter) != std::string_view::npos)
            result += letter;
        else
            result.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
    return result;
}

std::string templateNameOfUrl(const std::string& url) {
    std::string path = url.substr(0, url.find_first_of("?#"));
    while (!path.empty() && path.back() == '/') path.pop_back();
    const std::string last = percentDecoded(path.substr(path.rfind('/') + 1));
    return last.substr(0, last.rfind('.'));
}

}  // namespace multiscene
