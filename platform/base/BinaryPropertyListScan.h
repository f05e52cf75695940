#pragma once

#include <cstdint>
#include <span>

namespace platform {

/// What parsing a binary property list would unfold to. Objects may be shared by reference, so a few bytes
/// can stand for a great tree, and a cycle for an endless one.
struct BinaryPropertyListShape {
    bool wellFormed = false;  ///< the trailer and every reference lie inside the data and there is no cycle
    int depth = 0;            ///< nesting of arrays and dictionaries
    uint64_t values = 0;      ///< values after unfolding, saturated
    uint64_t bytes = 0;       ///< of data and characters of texts after unfolding, saturated
};

bool isBinaryPropertyList(std::span<const uint8_t> bytes);
/// A list of more than `maxObjects` is not looked at: they are its values.
BinaryPropertyListShape scanBinaryPropertyList(std::span<const uint8_t> bytes, uint64_t maxObjects);

}  // namespace platform
