#pragma once

#include <cstdint>
#include <string_view>

namespace platform::http {

struct Range {
    enum class Kind { Whole, Part, Unsatisfiable };
    Kind kind = Kind::Whole;
    uint64_t first = 0, length = 0;  ///< of a part
};

/// What the value of a "Range" line asks for of `size` bytes. Several ranges, other units and what is
/// malformed ask for the whole.
Range readRange(std::string_view value, uint64_t size);

}  // namespace platform::http
