// Filters of whole pictures: colours changed, places moved, one loop over the pixels for each filter.
#pragma once

#include <array>
#include <string_view>

#include "platform/base/Limits.h"
#include "platform/pixels/Surface.h"

namespace platform {

class TilePainter;

/// Neither side of a filtered picture has more pixels.
inline constexpr int kLongestFilteredSide = limitOf<int>("maxFilteredSide");

/// One filter over one picture. Colours are multiplied by alpha.
struct FilterPass {
    Surface picture;  ///< sides of 1 to kLongestFilteredSide
    Surface aside;    ///< the second picture, for filters that look at one
    /// Pixels of the second picture for one of the first.
    float asideScale = 1;
    /// Where the upper left corner of the first picture lies in the second one, which repeats itself.
    std::array<float, 2> asideShift{};
    float strength = 1;                            ///< how much of the filter shows, 0 to 1
    std::array<float, 6> numbers{};                ///< what they mean is the filter's, each in its range
    std::array<std::array<float, 4>, 2> colors{};  ///< red, green, blue, alpha, 0 to 1, not multiplied
    Canvas filtered;                               ///< of the picture's size, other memory
};

/// Filters one row.
using FilterLoop = void (*)(const FilterPass& pass, int row);

/// The loop of a filter, made for this processor; the same bytes on every one. None for an unknown name.
FilterLoop filterLoopNamed(std::string_view name);

/// Filters all rows.
void filterPicture(const FilterPass& pass, FilterLoop loop, TilePainter& threads);

}  // namespace platform
