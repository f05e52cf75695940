#include "app/Job/UserText.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "platform/base/Error.h"
#include "platform/base/Utf8.h"

namespace multiscene {

namespace {

using platform::Error;
using platform::ErrorKind;

/// Characters of UTF-8 text; nothing when it is none.
std::optional<int64_t> characterCount(const std::string& text) {
    int64_t count = 0;
    for (size_t at = 0; at < text.size(); ++count) {
        const size_t length = platform::utf8CharacterLength(std::string_view(text).substr(at));
        if (length == 0) return std::nullopt;
        at += length;
    }
    return count;
}

std::string withPlainLineEnds(const std::string& text) {
    std::string result;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n') continue;
        result += text[at] == '\r' ? '\n' : text[at];
    }
    return result;
}

bool isControl(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return (code < 0x20 && letter != '\n' && letter != '\t') || code == 0x7f;
}

void requireWithin(int64_t count, int64_t limit, const std::string& what, const std::string& key) {
    if (limit < 1 || count <= limit) return;
    throw Error(ErrorKind::Input,
                "the text has " + std::to_string(count) + " " + what + "; the template takes " +
                    std::to_string(limit),
                "", key);
}

}  // namespace

std::string acceptedText(const std::string& text, const std::string& key,
                         const QVUserTextInputModel* limits) {
    const std::string plain = withPlainLineEnds(text);
    const auto count = characterCount(plain);
    if (!count) throw Error(ErrorKind::Input, "the text is not UTF-8", "", key);
    if (std::any_of(plain.begin(), plain.end(), isControl))
        throw Error(ErrorKind::Input, "the text holds control characters", "", key);
    if (!limits) return plain;
    const int64_t lineEnds = std::count(plain.begin(), plain.end(), '\n');
    requireWithin(*count - lineEnds, limits->maxLenght(), "characters", key);
    requireWithin(lineEnds + 1, limits->maxLine(), "lines", key);
    return plain;
}

}  // namespace multiscene
