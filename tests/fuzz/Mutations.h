// Every prefix of a valid file, and random damage to it: what each parser must survive.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace multiscene::testing {

using Bytes = std::vector<uint8_t>;
/// Must come back, whatever the bytes are, and says whether it took them; what it throws on purpose it
/// catches itself.
using Parser = std::function<bool(const Bytes&)>;

/// Mutations a parser: a few in every run of the tests, MULTISCENE_FUZZ_MUTATIONS for a long one.
inline int mutationCount() {
    const char* wanted = std::getenv("MULTISCENE_FUZZ_MUTATIONS");
    return wanted ? std::atoi(wanted) : 1500;
}

/// One to eight changes: bytes set, bits flipped, parts doubled, removed, or replaced by a number that breaks
/// sums.
class Mutator {
  public:
    explicit Mutator(uint32_t seed) : random_(seed) {}

    Bytes mutated(Bytes bytes) {
        for (uint32_t changes = 1 + below(8); changes > 0 && !bytes.empty(); --changes) change(bytes);
        return bytes;
    }

  private:
    uint32_t below(size_t count) { return static_cast<uint32_t>(random_() % count); }

    void change(Bytes& bytes) {
        const size_t at = below(bytes.size()), length = 1 + below(std::min<size_t>(bytes.size() - at, 64));
        const auto begin = bytes.begin() + static_cast<ptrdiff_t>(at),
                   end = begin + static_cast<ptrdiff_t>(length);
        switch (below(6)) {
            case 0:
                bytes[at] = static_cast<uint8_t>(random_());
                break;
            case 1:
                bytes[at] ^= static_cast<uint8_t>(1u << below(8));
                break;
            case 2:
                bytes.erase(begin, end);
                break;
            case 3: {
                const Bytes part(begin, end);
                bytes.insert(bytes.begin() + below(bytes.size()), part.begin(), part.end());
                break;
            }
            case 4:
                replaceDigits(bytes, at);
                break;
            default: {
                static constexpr uint8_t extremes[] = {0x00, 0x7F, 0x80, 0xFF};
                std::fill(begin, begin + static_cast<ptrdiff_t>(std::min<size_t>(length, 4)),
                          extremes[below(4)]);
            }
        }
    }

    /// Text formats break on numbers, not on bytes.
    void replaceDigits(Bytes& bytes, size_t from) {
        static const std::string numbers[] = {"-1",  "0",   "99999999999999999999", "2147483648", "1e39",
                                              "nan", "-0.0"};
        size_t at = from;
        while (at < bytes.size() && !std::isdigit(bytes[at])) ++at;
        size_t end = at;
        while (end < bytes.size() && std::isdigit(bytes[end])) ++end;
        if (at == end) return;
        const std::string& number = numbers[below(std::size(numbers))];
        bytes.erase(bytes.begin() + static_cast<ptrdiff_t>(at), bytes.begin() + static_cast<ptrdiff_t>(end));
        bytes.insert(bytes.begin() + static_cast<ptrdiff_t>(at), number.begin(), number.end());
    }

    std::mt19937 random_;
};

/// Long files are cut at most this many times, evenly.
inline void survive(const Bytes& valid, const Parser& parse, size_t prefixes = 4000) {
    EXPECT_TRUE(parse(valid)) << "the undamaged file is refused";
    const size_t step = 1 + valid.size() / prefixes;
    for (size_t size = 0; size < valid.size(); size += step)
        parse(Bytes(valid.begin(), valid.begin() + static_cast<ptrdiff_t>(size)));
    Mutator mutator(20240229);
    for (int i = mutationCount(); i > 0; --i) parse(mutator.mutated(valid));
}

inline Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

}  // namespace multiscene::testing
