#include "platform/font/LetterGroups.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace platform {

namespace {

/// Marks stand between a letter and the next one, so a letter may overlap one some places before.
constexpr size_t lookBack = 4;
/// Pixels an em, enough to see whether letters overlap.
constexpr double resolution = 96;

bool isCovered(const Bitmap& bitmap, int x, int y) {
    constexpr uint8_t least = 64;  // of 255: edges that only touch count too
    return bitmap.pixel(x, y)[3] >= least;
}

class OverlapTest {
  public:
    explicit OverlapTest(const ShapedText& text) : text_(text) {}

    bool operator()(const GlyphPlacement& a, const GlyphPlacement& b) {
        if (!canOverlap(a.glyph) || !canOverlap(b.glyph)) return false;
        const TextRect first = text_.ink(a.glyph), second = text_.ink(b.glyph);
        const double x = b.x - a.x, y = b.y - a.y;
        const bool boxesMeet =
            x + second.x < first.x + first.width && first.x < x + second.x + second.width &&
            y + second.y < first.y + first.height && first.y < y + second.y + second.height;
        return boxesMeet && shapesMeet(pictureOf(a.glyph), pictureOf(b.glyph), x, y);
    }

  private:
    /// Letters of a height that nobody writes with are not worth a look.
    bool canOverlap(size_t glyph) const {
        constexpr double largest = 4 * ShapedText::em;
        const TextRect ink = text_.ink(glyph);
        return !text_.isColored(glyph) && ink.width <= largest && ink.height <= largest;
    }

    const GlyphPicture& pictureOf(size_t glyph) {
        auto [found, isNew] = pictures_.try_emplace(glyph);
        if (isNew) found->second = text_.picture({{GlyphPlacement{.glyph = glyph}}}, resolution);
        return found->second;
    }

    static bool shapesMeet(const GlyphPicture& a, const GlyphPicture& b, double x, double y) {
        constexpr double pixels = resolution / ShapedText::em;
        const int right = int(std::lround(x * pixels + b.left - a.left));
        const int down = int(std::lround(a.top - b.top - y * pixels));
        const int lastRow = std::min(b.bitmap.height, a.bitmap.height - down);
        const int lastColumn = std::min(b.bitmap.width, a.bitmap.width - right);
        for (int row = std::max(0, -down); row < lastRow; ++row)
            for (int column = std::max(0, -right); column < lastColumn; ++column)
                if (isCovered(b.bitmap, column, row) && isCovered(a.bitmap, column + right, row + down))
                    return true;
        return false;
    }

    const ShapedText& text_;
    std::map<size_t, GlyphPicture> pictures_;
};

}  // namespace

std::vector<std::span<const GlyphPlacement>> letterGroups(const ShapedText& text,
                                                          const std::vector<size_t>& parts, double longest) {
    const std::vector<GlyphPlacement>& letters = text.placements();
    std::vector<std::span<const GlyphPlacement>> groups;
    OverlapTest overlap(text);
    size_t start = 0;
    double left = 0;
    for (size_t i = 0; i < letters.size(); ++i) {
        const TextRect ink = text.ink(letters[i].glyph);
        const size_t oldest = std::max(start, i - std::min(i, lookBack));
        const bool joins =
            parts[i] == parts[start] && letters[i].x + ink.x + ink.width - left <= longest &&
            std::any_of(letters.begin() + ptrdiff_t(oldest), letters.begin() + ptrdiff_t(i),
                        [&](const GlyphPlacement& other) { return overlap(other, letters[i]); });
        if (joins) {
            left = std::min(left, letters[i].x + ink.x);
            continue;
        }
        if (i > start) groups.emplace_back(&letters[start], i - start);
        start = i;
        left = letters[i].x + ink.x;
    }
    if (start < letters.size()) groups.emplace_back(&letters[start], letters.size() - start);
    return groups;
}

LetterForm formOf(std::span<const GlyphPlacement> letters) {
    constexpr double steps = 64;  // of one unit: finer than anything that is seen
    LetterForm form;
    for (const GlyphPlacement& letter : letters)
        form.emplace_back(letter.glyph, std::lround((letter.x - letters[0].x) * steps),
                          std::lround((letter.y - letters[0].y) * steps));
    return form;
}

}  // namespace platform
