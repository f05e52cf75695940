#include "platform/font/Letters.h"

#include <algorithm>
#include <cmath>

#include "platform/font/FlatGlyphs.h"
#include "platform/font/SolidGlyphs.h"

namespace platform {

namespace {

/// Pixels an em in an atlas that has room for every letter that a text can have.
constexpr double leastResolution = 24;

/// Model units of one unit of a shaped text.
float unitOf(const LetterText& text) {
    const float size = std::isfinite(text.font.size) && text.font.size > 0 ? text.font.size : 1;
    return size / float(ShapedText::em);
}

ShapedText shape(const LetterText& text, float unit) {
    constexpr float longest = 1'000'000;  // what is longer never breaks
    const float lineLength = text.lineLength / unit;
    return {{.text = text.text, .font = text.font, .alignment = text.alignment},
            lineLength < longest ? double(lineLength) : 0};
}

void scale(std::vector<LetterVertex>& vertices, float unit) {
    for (LetterVertex& vertex : vertices) {
        vertex.x *= unit;
        vertex.y *= unit;
        vertex.z *= unit;
    }
}

/// From the text's units to the model's.
template <typename Letters>
Letters finished(Letters letters, const ShapedText& text, float unit) {
    scale(letters.triangles, unit);
    scale(letters.coloredTriangles, unit);
    letters.block = {float(text.size().width) * unit, float(text.size().height) * unit};
    std::ranges::copy(text.missingLetters(), std::back_inserter(letters.leftOut));
    std::ranges::sort(letters.leftOut);
    letters.leftOut.erase(std::ranges::unique(letters.leftOut).begin(), letters.leftOut.end());
    return letters;
}

}  // namespace

FlatLetters flatLetters(const LetterText& text) {
    const float unit = unitOf(text);
    const ShapedText shaped = shape(text, unit);
    double resolution = ShapedText::em;
    FlatLetters letters = flatGlyphs(shaped, resolution);
    while (!letters.leftOut.empty() && resolution > leastResolution)
        letters = flatGlyphs(shaped, resolution /= 2);
    return finished(std::move(letters), shaped, unit);
}

SolidLetters solidLetters(const LetterText& text, float depth) {
    const float unit = unitOf(text);
    const ShapedText shaped = shape(text, unit);
    return finished(solidGlyphs(shaped, double(depth / unit)), shaped, unit);
}

}  // namespace platform
