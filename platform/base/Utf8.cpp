#include "platform/base/Utf8.h"

namespace platform {

namespace {

size_t announcedLength(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first < 0xe0) return 2;
    if (first >= 0xe0 && first < 0xf0) return 3;
    return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

/// Surrogates, numbers beyond Unicode, and numbers that a shorter sequence writes.
bool isForbiddenPair(unsigned char first, unsigned char second) {
    return (first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
           (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f);
}

/// Bytes of the well-formed character at the start of a text that is not empty, 1 to 4; 0 when there is none.
size_t characterLength(std::string_view text) {
    const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
    const size_t length = announcedLength(byte(0));
    if (length == 0 || length > text.size()) return 0;
    for (size_t at = 1; at < length; ++at)
        if ((byte(at) & 0xc0) != 0x80) return 0;
    return length > 2 && isForbiddenPair(byte(0), byte(1)) ? 0 : length;
}

}  // namespace

size_t firstInvalidUtf8(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = characterLength(text.substr(at));
        if (length == 0) return at;
        at += length;
    }
    return std::string_view::npos;
}

}  // namespace platform
