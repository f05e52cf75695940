#include "platform/http/Target.h"

#include <algorithm>

#include "platform/base/Utf8.h"
#include "platform/http/Refusal.h"

namespace platform::http {

namespace {

constexpr size_t mostParameters = 100;

int hexDigit(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

char escapedByte(std::string_view escape) {
    const int high = escape.size() == 3 ? hexDigit(escape[1]) : -1;
    const int low = escape.size() == 3 ? hexDigit(escape[2]) : -1;
    if (high < 0 || low < 0) throw Refusal(400, "the address holds a wrong escape");
    return static_cast<char>(high * 16 + low);
}

std::string decoded(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            bytes += text[at];
            continue;
        }
        bytes += escapedByte(text.substr(at, 3));
        at += 2;
    }
    if (firstInvalidUtf8(bytes) != std::string_view::npos) throw Refusal(400, "the address is no UTF-8");
    if (bytes.find('\0') != std::string::npos) throw Refusal(400, "the address holds a NUL");
    return bytes;
}

/// Those of ASCII, and the second set, which UTF-8 writes as C2 80 to C2 9F.
bool hasControls(std::string_view text) {
    for (size_t at = 0; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x20 || byte == 0x7f) return true;
        if (byte == 0xc2 && static_cast<unsigned char>(text[at + 1]) < 0xa0) return true;
    }
    return false;
}

std::string segment(std::string_view text) {
    std::string name = decoded(text);
    if (name == "." || name == ".." || name.find_first_of("/\\") != std::string::npos || hasControls(name))
        throw Refusal(400, "the address holds a part that is no name");
    return name;
}

std::vector<std::string> segments(std::string_view path) {
    std::vector<std::string> parts;
    path.remove_prefix(1);
    while (!path.empty()) {
        const size_t end = path.find('/');
        if (end == 0) throw Refusal(400, "the address holds an empty part");
        parts.push_back(segment(path.substr(0, end)));
        if (end == std::string_view::npos) return parts;
        path.remove_prefix(end + 1);
        if (path.empty()) parts.emplace_back();
    }
    return parts;
}

/// As forms write them: a plus sign is a space.
std::string formDecoded(std::string_view text) {
    std::string spaced(text);
    std::replace(spaced.begin(), spaced.end(), '+', ' ');
    return decoded(spaced);
}

std::vector<Field> parameters(std::string_view query) {
    std::vector<Field> all;
    while (!query.empty()) {
        const size_t end = std::min(query.find('&'), query.size());
        const std::string_view pair = query.substr(0, end);
        query.remove_prefix(std::min(end + 1, query.size()));
        if (pair.empty()) continue;
        if (all.size() == mostParameters) throw Refusal(414, "the address has too many parameters");
        const size_t sign = std::min(pair.find('='), pair.size());
        all.push_back(
            {formDecoded(pair.substr(0, sign)), formDecoded(pair.substr(std::min(sign + 1, pair.size())))});
    }
    return all;
}

}  // namespace

void readTarget(std::string_view target, RequestHead& head) {
    if (!target.starts_with('/')) throw Refusal(400, "the address does not begin with a slash");
    const bool isPlain = std::all_of(target.begin(), target.end(),
                                     [](char c) { return c > 0x20 && c < 0x7f && c != '#' && c != '\\'; });
    if (!isPlain) throw Refusal(400, "the address holds a character that has to be escaped");
    const size_t mark = std::min(target.find('?'), target.size());
    head.target = target;
    head.path = segments(target.substr(0, mark));
    head.query = parameters(target.substr(std::min(mark + 1, target.size())));
}

}  // namespace platform::http
