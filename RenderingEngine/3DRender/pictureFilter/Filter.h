// Image filters as values: what is done to a picture before it is drawn.
#pragma once

#include <array>
#include <cstdint>
#include <glm/glm.hpp>
#include <memory>
#include <vector>

#include "pictureFilter/FilterTypes.h"

namespace platform {
class ColorTable;
}

namespace multiscene {

struct Filter {
    const FilterType* type = nullptr;  ///< never none
    float strength = 1;                ///< how much of it shows, 0 to 1
    std::array<float, 6> numbers{};    ///< as its type's keys have them, in their ranges
    std::array<glm::vec4, 2> colors{};
    std::shared_ptr<const platform::ColorTable> table = {};  ///< of filters that look at one
    int64_t frame = 0;  ///< of those that look different in each frame; else 0

    bool operator==(const Filter&) const = default;
};

/// Filters of one picture, the first one first.
struct FilterChain {
    std::vector<Filter> filters;
    glm::vec2 pictureSize{1};  ///< what the picture looks like, in any unit

    bool operator==(const FilterChain&) const = default;
};

struct FilteredSize {
    int width = 0, height = 0;
    bool operator==(const FilteredSize&) const = default;
};

/// The size that a picture is filtered in: its pixels are as high as wide, there are not more than the
/// texture has, and neither side has more than platform::kLongestFilteredSide.
FilteredSize filteredSize(int textureWidth, int textureHeight, const glm::vec2& pictureSize);

/// Width of the blur that a filter looks at, in pixels of its picture.
double blurOf(const Filter& filter, const FilteredSize& size);
/// How many pixels of noise a filter looks at for one of its picture, whose first number is the size of a
/// grain.
float grainScale(const Filter& filter, const FilteredSize& size);

}  // namespace multiscene
