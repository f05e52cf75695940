// Bytes as decisions: what a generator makes of them. Ends in zeros, so that short inputs make small things.
#pragma once

#include <algorithm>

#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

class ByteSource {
  public:
    explicit ByteSource(Bytes bytes) : bytes_(bytes) {}

    bool isEmpty() const { return bytes_.empty(); }
    /// From 0 to `count` - 1.
    uint32_t below(uint32_t count) {
        uint32_t value = byte();
        if (count > 256) value = value << 8 | byte();
        return value % count;
    }
    bool oneIn(uint32_t count) { return below(count) == count - 1; }
    template <typename Range>
    auto& oneOf(const Range& range) {
        return std::data(range)[below(static_cast<uint32_t>(std::size(range)))];
    }
    Bytes take(size_t count) {
        const Bytes taken = bytes_.first(std::min(count, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return taken;
    }
    Bytes rest() { return take(bytes_.size()); }

  private:
    uint8_t byte() {
        const Bytes taken = take(1);
        return taken.empty() ? 0 : taken[0];
    }

    Bytes bytes_;
};

}  // namespace multiscene::fuzz
