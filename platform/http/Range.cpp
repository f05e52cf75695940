#include "platform/http/Range.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "platform/http/RequestHead.h"

namespace platform::http {

namespace {

constexpr uint64_t most = std::numeric_limits<uint64_t>::max();

/// Too large a number is the largest there is: it lies behind the end of every file.
std::optional<uint64_t> number(std::string_view digits) {
    if (digits.empty()) return std::nullopt;
    uint64_t value = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9') return std::nullopt;
        const auto unit = static_cast<uint64_t>(digit - '0');
        value = value > (most - unit) / 10 ? most : value * 10 + unit;
    }
    return value;
}

Range part(uint64_t first, uint64_t length) {
    if (length == 0) return {Range::Kind::Unsatisfiable, 0, 0};
    return {Range::Kind::Part, first, length};
}

}  // namespace

Range readRange(std::string_view value, uint64_t size) {
    constexpr std::string_view unit = "bytes=";
    if (!sameToken(value.substr(0, unit.size()), unit)) return {};
    value.remove_prefix(unit.size());
    const size_t dash = value.find('-');
    if (dash == std::string_view::npos) return {};
    const std::string_view before = value.substr(0, dash), after = value.substr(dash + 1);
    const std::optional<uint64_t> first = number(before), last = number(after);

    if (before.empty() && last) {
        const uint64_t length = std::min(*last, size);
        return part(size - length, length);
    }
    if (!first || (!last && !after.empty()) || (last && *last < *first)) return {};
    if (*first >= size) return part(0, 0);
    return part(*first, std::min(last.value_or(most), size - 1) - *first + 1);
}

}  // namespace platform::http
