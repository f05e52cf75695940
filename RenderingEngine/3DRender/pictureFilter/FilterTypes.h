// The image filters that there are, in one table: name, keys, and what their shader and their loop look at.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "format/KeyTable.h"

namespace multiscene {

/// What a filter looks at besides its picture.
enum class FilterAside {
    None,
    Blurred,  ///< the picture out of focus, by its first number
    Noise,    ///< the grain of the frame
    Table,    ///< a table of colours
};

/// A filter has a shader "filters/NAME.fsh" and a loop of its name in platform/pixels/filters. Its keys of
/// type Number are the numbers that both get, in this order, at most six; those of type Color are its
/// colours, at most two.
struct FilterType {
    std::string_view name;
    const KeyTable* keys;
    FilterAside aside = FilterAside::None;
    /// Width of the blur (sigma), for one of the first number, which is a part of the picture's shorter side.
    float blurred = 0;
    bool movesPlaces = false;  ///< it says where to look in the picture; else it changes a pixel's colour
};

std::span<const FilterType> filterTypes();
/// Null for a name that is none.
const FilterType* filterTypeNamed(std::string_view name);

/// Its keys of one type, in order.
std::vector<const Key*> keysOf(const FilterType& type, KeyType keyType);

/// Every filter by its "filter".
extern const KeyVariants filterVariants;

}  // namespace multiscene
