#include "cli/Table.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace multiscene::cli {

namespace {

constexpr size_t kGap = 2;

/// Takes one character of UTF-8 at `at`; what is no UTF-8 counts as U+FFFD, a byte at a time.
uint32_t takeCharacter(const std::string& text, size_t& at) {
    constexpr uint32_t replacement = 0xfffd;
    const auto first = static_cast<unsigned char>(text[at++]);
    if (first < 0x80) return first;
    const int more = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : first >= 0xc2 ? 1 : 0;
    if (more == 0 || at + more > text.size()) return replacement;
    uint32_t character = first & (0x3f >> more);
    for (int index = 0; index < more; ++index) {
        const auto next = static_cast<unsigned char>(text[at + index]);
        if ((next & 0xc0) != 0x80) return replacement;
        character = character << 6 | (next & 0x3f);
    }
    at += more;
    return character;
}

bool isControl(uint32_t character) {
    const bool turnsDirection =
        (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
    return character < 0x20 || (character >= 0x7f && character < 0xa0) || turnsDirection;
}

size_t widthOf(uint32_t character) {
    const bool isWide =
        (character >= 0x1100 && character <= 0x115f) || (character >= 0x2e80 && character <= 0xa4cf) ||
        (character >= 0xac00 && character <= 0xd7a3) || (character >= 0xf900 && character <= 0xfaff) ||
        (character >= 0xfe30 && character <= 0xfe6f) || (character >= 0xff00 && character <= 0xff60) ||
        character >= 0x1f300;
    return isWide ? 2 : 1;
}

size_t widthOf(const std::string& text) {
    size_t width = 0;
    for (size_t at = 0; at < text.size();) width += widthOf(takeCharacter(text, at));
    return width;
}

std::string formatted(const char* pattern, double number) {
    char text[32];
    std::snprintf(text, sizeof text, pattern, number);
    return text;
}

}  // namespace

std::string printable(const std::string& text) {
    std::string shown;
    for (size_t at = 0; at < text.size();) {
        const size_t start = at;
        const uint32_t character = takeCharacter(text, at);
        shown += isControl(character) ? "?" : text.substr(start, at - start);
    }
    return shown;
}

void Table::add(std::vector<std::string> cells) {
    for (std::string& cell : cells) cell = printable(cell);
    rows_.push_back(std::move(cells));
}

std::string Table::text() const {
    std::vector<size_t> widths(rows_.front().size(), 0);
    for (const auto& row : rows_)
        for (size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], widthOf(row[column]));
    std::string text;
    for (const auto& row : rows_) {
        for (size_t column = 0; column + 1 < row.size(); ++column)
            text += row[column] + std::string(widths[column] - widthOf(row[column]) + kGap, ' ');
        text += row.back() + "\n";
    }
    return text;
}

std::string megabyteText(double megabytes) {
    constexpr double kilobytesPerMegabyte = 1024, smallest = 0.1;
    return megabytes < smallest ? formatted("%.0f kB", megabytes * kilobytesPerMegabyte)
                                : formatted("%.1f MB", megabytes);
}
std::string secondsText(double seconds) { return formatted("%.1f s", seconds); }

}  // namespace multiscene::cli
