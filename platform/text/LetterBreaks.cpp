#include "platform/text/LetterBreaks.h"

#include <pango/pango.h>

#include <algorithm>

#include "platform/text/JoinedLetters.h"

namespace platform {

namespace {

/// In these scripts a killed vowel binds two consonants into one shape; in others its sign just stands there.
bool bindsConsonants(gunichar letter) {
    constexpr int virama = 9;
    if (g_unichar_combining_class(letter) != virama) return false;
    switch (g_unichar_get_script(letter)) {
        case G_UNICODE_SCRIPT_BENGALI:
        case G_UNICODE_SCRIPT_DEVANAGARI:
        case G_UNICODE_SCRIPT_GUJARATI:
        case G_UNICODE_SCRIPT_GURMUKHI:
        case G_UNICODE_SCRIPT_KANNADA:
        case G_UNICODE_SCRIPT_KHMER:
        case G_UNICODE_SCRIPT_MALAYALAM:
        case G_UNICODE_SCRIPT_MYANMAR:
        case G_UNICODE_SCRIPT_ORIYA:
        case G_UNICODE_SCRIPT_SINHALA:
        case G_UNICODE_SCRIPT_TELUGU:
            return true;
        default:
            return false;
    }
}

bool isJoiner(gunichar letter) { return letter == 0x200D; }

}  // namespace

LetterBreaks letterBreaks(const std::string& text) {
    const auto codePoints = size_t(g_utf8_strlen(text.c_str(), -1));
    std::vector<PangoLogAttr> attributes(codePoints + 1);
    pango_get_log_attrs(text.c_str(), int(text.size()), -1, pango_language_from_string("zh-cn"),
                        attributes.data(), int(attributes.size()));
    const std::vector<size_t> joined = joinedLetters(text.c_str());
    LetterBreaks breaks;
    bool isBound = false;
    const char* at = text.c_str();
    for (size_t i = 0; i < codePoints; ++i, at = g_utf8_next_char(at)) {
        const gunichar letter = g_utf8_get_char(at);
        const auto byte = size_t(at - text.c_str());
        const bool hangsOn =
            (isBound && g_unichar_isalpha(letter)) || std::ranges::binary_search(joined, byte);
        if (i == 0 || (attributes[i].is_cursor_position && !hangsOn)) breaks.letters.push_back(byte);
        if (i == 0 || attributes[i].is_line_break) breaks.words.push_back(byte);
        isBound = bindsConsonants(letter) || (isBound && isJoiner(letter));
    }
    return breaks;
}

}  // namespace platform
