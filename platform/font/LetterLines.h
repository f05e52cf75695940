// Breaks a text into lines and places its letters. For the files of this folder.
#pragma once

#include <string>
#include <vector>

#include "platform/font/LetterFont.h"

namespace platform {

struct LetterLine {
    std::u32string letters;
    double length = 0;
};

/// Lines no longer than `lineLength`, as far as single letters allow; 0: only line feeds break. Blanks at a
/// break are dropped.
std::vector<LetterLine> breakLines(const std::u32string& text, const LetterFont& font, double lineLength);

/// Draws the lines in a block of their longest one around the origin; returns its size.
struct LineBlock {
    double width = 0, height = 0;
};
LineBlock drawLines(const std::vector<LetterLine>& lines, const LetterFont& font, TextAlignment alignment);

}  // namespace platform
