#include "platform/text/JoinedLetters.h"

#include <fribidi.h>
#include <glib.h>

namespace platform {

namespace {

/// Their letters hang from a common line.
bool hasHeadline(gunichar letter) {
    const GUnicodeScript script = g_unichar_get_script(letter);
    return script == G_UNICODE_SCRIPT_DEVANAGARI || script == G_UNICODE_SCRIPT_BENGALI ||
           script == G_UNICODE_SCRIPT_GURMUKHI;
}

bool staysInPlace(gunichar letter, bool isAfterSuch) {
    if (g_unichar_get_script(letter) == G_UNICODE_SCRIPT_INHERITED) return isAfterSuch;  // a mark
    const FriBidiJoiningType type = fribidi_get_joining_type(letter);
    return FRIBIDI_JOINS_RIGHT(type) || FRIBIDI_JOINS_LEFT(type) || hasHeadline(letter);
}

}  // namespace

std::vector<TextRange> separableRanges(const char* text) {
    std::vector<TextRange> ranges;
    bool stays = false;
    for (const char* at = text; *at; at = g_utf8_next_char(at)) {
        stays = staysInPlace(g_utf8_get_char(at), stays);
        if (stays) continue;
        const size_t start = size_t(at - text), end = size_t(g_utf8_next_char(at) - text);
        if (!ranges.empty() && ranges.back().end == start)
            ranges.back().end = end;
        else
            ranges.push_back({start, end});
    }
    return ranges;
}

std::vector<size_t> joinedLetters(const char* text) {
    std::vector<size_t> joined;
    bool reachesOn = false;
    for (const char* at = text; *at; at = g_utf8_next_char(at)) {
        const FriBidiJoiningType type = fribidi_get_joining_type(g_utf8_get_char(at));
        if (FRIBIDI_IS_JOINING_TYPE_T(type)) continue;
        if (reachesOn && FRIBIDI_JOINS_RIGHT(type)) joined.push_back(size_t(at - text));
        reachesOn = FRIBIDI_JOINS_LEFT(type);
    }
    return joined;
}

}  // namespace platform
