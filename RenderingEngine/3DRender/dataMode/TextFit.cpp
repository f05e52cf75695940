#include "dataMode/TextFit.h"

#include <algorithm>
#include <optional>

namespace multiscene {

using platform::TextLayoutDescription;
using platform::TextSize;
using platform::TextWrap;

namespace {

/// Of a pixel: rounding must not push a text that just fits to the next smaller size.
constexpr double tolerance = 0.01;
/// Halvings of the range of scales; the last step is far below a hundredth of the size.
constexpr int searchSteps = 8;

struct Fitter {
    TextLayoutDescription layout;
    TextSize texture, margin;

    bool fits(double scale) const {
        const TextSize room{texture.width / scale - 2 * margin.width,
                            texture.height / scale - 2 * margin.height};
        if (room.width <= 0 || room.height <= 0) return false;
        const bool vertical = layout.direction == platform::TextDirection::Vertical;
        const TextSize needed = measureText(layout, vertical ? room.height : room.width).size;
        return needed.width <= room.width + tolerance && needed.height <= room.height + tolerance;
    }

    /// The largest fitting scale found between `smallest`, which fits, and 1, which does not.
    double search(double smallest) const {
        double low = smallest, high = 1;
        for (int step = 0; step < searchSteps; ++step) {
            const double middle = (low + high) / 2;
            (fits(middle) ? low : high) = middle;
        }
        return low;
    }
};

/// With every line as it is written, no smaller than `smallest`.
std::optional<TextFit> fitWrittenLines(Fitter& fitter, double smallest) {
    fitter.layout.wrap = TextWrap::None;
    if (fitter.fits(1)) return TextFit{1, TextWrap::None, true};
    if (!fitter.fits(smallest)) return std::nullopt;
    return TextFit{fitter.search(smallest), TextWrap::None, true};
}

/// With lines broken where they are too long.
TextFit fitBrokenLines(Fitter& fitter, const TextFitLimits& limits) {
    fitter.layout.wrap = TextWrap::Words;
    if (fitter.fits(1)) return {1, TextWrap::Words, true};
    if (fitter.fits(limits.smallestUnbroken))
        return {fitter.search(limits.smallestUnbroken), TextWrap::Words, true};
    fitter.layout.wrap = TextWrap::WordsThenCharacters;
    if (fitter.fits(limits.smallest)) return {fitter.search(limits.smallest), fitter.layout.wrap, true};
    return {limits.smallest, fitter.layout.wrap, false};
}

}  // namespace

TextFit fitText(TextLayoutDescription layout, TextSize texture, TextSize margin,
                const TextFitLimits& limits) {
    Fitter fitter{std::move(layout), texture, margin};
    const bool hasLines = fitter.layout.text.find('\n') != std::string::npos;
    const TextFit broken = fitBrokenLines(fitter, limits);
    if (!hasLines) return broken;
    const double smallest = std::max(limits.smallest, broken.scale * smallestWrittenShare);
    return fitWrittenLines(fitter, smallest).value_or(broken);
}

}  // namespace multiscene
