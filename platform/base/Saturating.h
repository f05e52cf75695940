// Arithmetic on numbers that files may write up to the ends of 64 bits: it stops there.
#pragma once

#include <cstdint>
#include <limits>

namespace platform {

inline int64_t saturatingSum(int64_t left, int64_t right) {
    int64_t sum = 0;
    if (!__builtin_add_overflow(left, right, &sum)) return sum;
    return right > 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
}

inline int64_t saturatingDifference(int64_t left, int64_t right) {
    int64_t difference = 0;
    if (!__builtin_sub_overflow(left, right, &difference)) return difference;
    return right < 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
}

}  // namespace platform
