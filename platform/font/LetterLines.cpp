#include "platform/font/LetterLines.h"

#include <algorithm>

namespace platform {

namespace {

/// From here on are the scripts of the Far East, which break between any two letters.
constexpr char32_t firstIdeograph = 0x2E80;

double lengthOf(const std::u32string& letters, const LetterFont& font) {
    double length = 0;
    for (size_t i = 0; i < letters.size(); ++i) {
        length += font.advance(letters[i]);
        if (i + 1 < letters.size()) length += font.kerning(letters[i], letters[i + 1]);
    }
    return length;
}

bool breaksBefore(const std::u32string& text, size_t at) {
    return text[at - 1] == U' ' || text[at] >= firstIdeograph || text[at - 1] >= firstIdeograph;
}

std::u32string withoutBlanksAtEnd(std::u32string line) {
    while (!line.empty() && line.back() == U' ') line.pop_back();
    return line;
}

/// How many letters of the text the first line takes; at least one.
size_t firstLine(const std::u32string& text, const LetterFont& font, double lineLength) {
    double length = 0;
    size_t lastBreak = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (i > 0 && breaksBefore(text, i)) lastBreak = i;
        length += font.advance(text[i]) + (i > 0 ? font.kerning(text[i - 1], text[i]) : 0);
        if (length > lineLength && i > 0 && text[i] != U' ') return lastBreak > 0 ? lastBreak : i;
    }
    return text.size();
}

void breakParagraph(std::u32string text, const LetterFont& font, double lineLength,
                    std::vector<LetterLine>& lines) {
    do {
        const size_t count = lineLength > 0 ? firstLine(text, font, lineLength) : text.size();
        std::u32string line = withoutBlanksAtEnd(text.substr(0, count));
        const double length = lengthOf(line, font);
        lines.push_back({std::move(line), length});
        text.erase(0, count);
    } while (!text.empty());
}

void drawLine(const LetterLine& line, const LetterFont& font, double x, double y) {
    for (size_t i = 0; i < line.letters.size(); ++i) {
        font.draw(line.letters[i], x, y);
        x += font.advance(line.letters[i]);
        if (i + 1 < line.letters.size()) x += font.kerning(line.letters[i], line.letters[i + 1]);
    }
}

double alignmentShare(TextAlignment alignment) {
    return alignment == TextAlignment::Center ? 0.5 : alignment == TextAlignment::Right ? 1 : 0;
}

}  // namespace

std::vector<LetterLine> breakLines(const std::u32string& text, const LetterFont& font, double lineLength) {
    std::vector<LetterLine> lines;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(U'\n', start), text.size());
        breakParagraph(text.substr(start, end - start), font, lineLength, lines);
        start = end + 1;
    }
    return lines;
}

LineBlock drawLines(const std::vector<LetterLine>& lines, const LetterFont& font, TextAlignment alignment) {
    LineBlock block;
    for (const LetterLine& line : lines) block.width = std::max(block.width, line.length);
    const double lineHeight = font.ascender() - font.descender();
    block.height = lineHeight * double(lines.size());
    double baseline = block.height / 2 - font.ascender();
    for (const LetterLine& line : lines) {
        drawLine(line, font, -block.width / 2 + alignmentShare(alignment) * (block.width - line.length),
                 baseline);
        baseline -= lineHeight;
    }
    return block;
}

}  // namespace platform
