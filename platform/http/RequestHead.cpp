#include "platform/http/RequestHead.h"

#include <algorithm>

namespace platform::http {

namespace {

char lowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

bool sameToken(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

std::string RequestHead::header(std::string_view name) const {
    std::string joined;
    bool isFirst = true;
    for (const Field& field : fields) {
        if (!sameToken(field.name, name)) continue;
        if (!isFirst) joined += ", ";
        joined += field.value;
        isFirst = false;
    }
    return joined;
}

std::optional<std::string> RequestHead::parameter(std::string_view name) const {
    for (const Field& each : query)
        if (each.name == name) return each.value;
    return std::nullopt;
}

}  // namespace platform::http
