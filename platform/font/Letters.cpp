#include "platform/font/Letters.h"

#include <algorithm>
#include <cmath>

#include "platform/base/Limits.h"
#include "platform/font/FlatGlyphs.h"
#include "platform/font/SolidGlyphs.h"

namespace platform {

namespace {

/// More than anything that is still a letter, in ems.
constexpr float largestStroke = 2, largestBlur = 1, largestOffset = 100, largestDepth = 1000;
constexpr int mostBevelSteps = limitOf<int>("maxBevelSteps");

/// Model units of one unit of a shaped text.
float unitOf(const LetterText& text) {
    const float size = std::isfinite(text.font.size) && text.font.size > 0 ? text.font.size : 1;
    return size / float(ShapedText::em);
}

float within(float value, float least, float most, float otherwise) {
    return std::isfinite(value) ? std::clamp(value, least, most) : otherwise;
}

/// A length in the text's units, `most` in ems; one that is no number is 0.
float lengthIn(float unit, float length, float most) {
    const float ems = most * float(ShapedText::em);
    return within(length / unit, 0, ems, 0);
}

ShapedText shape(const LetterText& text, float unit) {
    constexpr float longest = 1'000'000;  // what is longer never breaks
    const float lineLength = text.lineLength / unit;
    return {{.text = text.text,
             .font = text.font,
             .alignment = text.alignment,
             .wrap = text.wrap,
             .letterSpacing =
                 within(text.letterSpacing, TextLimits::leastLetterSpacing, TextLimits::letterSpacing, 0),
             .lineSpacing = within(text.lineSpacing, 0, TextLimits::lineSpacing, 1)},
            lineLength < longest ? double(lineLength) : 0};
}

FlatLook inUnits(FlatLook look, float unit) {
    look.strokeWidth = lengthIn(unit, look.strokeWidth, largestStroke);
    if (!look.shadow) return look;
    const float most = largestOffset * float(ShapedText::em);
    look.shadow->blurRadius = lengthIn(unit, look.shadow->blurRadius, largestBlur);
    look.shadow->offsetX = within(look.shadow->offsetX / unit, -most, most, 0);
    look.shadow->offsetY = within(look.shadow->offsetY / unit, -most, most, 0);
    return look;
}

SolidLook inUnits(const SolidLook& look, float unit) {
    return {.depth = lengthIn(unit, look.depth, largestDepth),
            .bevelWidth = lengthIn(unit, look.bevelWidth, 1),
            .bevelDepth = lengthIn(unit, look.bevelDepth, largestDepth),
            .bevelSteps = std::clamp(look.bevelSteps, 1, mostBevelSteps),
            .frontsApart = look.frontsApart,
            .sidesApart = look.sidesApart};
}

void scale(LetterLayer& layer, float unit) {
    for (LetterVertex& corner : layer.corners) {
        corner.x *= unit;
        corner.y *= unit;
        corner.z *= unit;
    }
}

/// From the text's units to the model's.
template <typename Letters>
Letters finished(Letters letters, const ShapedText& text, float unit,
                 std::initializer_list<LetterLayer Letters::*> layers) {
    for (LetterLayer Letters::*layer : layers) scale(letters.*layer, unit);
    for (LetterPart& part : letters.parts)
        for (float* side : {&part.left, &part.right, &part.bottom, &part.top}) *side *= unit;
    letters.block = {float(text.size().width) * unit, float(text.size().height) * unit};
    std::ranges::copy(text.missingLetters(), std::back_inserter(letters.leftOut));
    std::ranges::sort(letters.leftOut);
    letters.leftOut.erase(std::unique(letters.leftOut.begin(), letters.leftOut.end()), letters.leftOut.end());
    return letters;
}

}  // namespace

FlatLetters flatLetters(const LetterText& text, const FlatLook& look) {
    const float unit = unitOf(text);
    const ShapedText shaped = shape(text, unit);
    return finished(
        flatGlyphs(shaped, text.part, inUnits(look, unit)), shaped, unit,
        {&FlatLetters::shadow, &FlatLetters::outline, &FlatLetters::letters, &FlatLetters::colored});
}

SolidLetters solidLetters(const LetterText& text, const SolidLook& look) {
    const float unit = unitOf(text);
    const ShapedText shaped = shape(text, unit);
    return finished(
        solidGlyphs(shaped, text.part, inUnits(look, unit)), shaped, unit,
        {&SolidLetters::letters, &SolidLetters::fronts, &SolidLetters::sides, &SolidLetters::colored});
}

}  // namespace platform
