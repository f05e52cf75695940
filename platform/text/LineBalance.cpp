#include "platform/text/LineBalance.h"

#include <compare>

namespace platform {

namespace {

/// What the lines up to a break cost. Even lines have the smallest sum of squares.
struct Cost {
    size_t brokenWords = 0, lines = 0;
    double squares = 0;
    auto operator<=>(const Cost&) const = default;
};

/// A place where a line may begin, with the best lines that end before it.
struct Break {
    size_t letter = 0;     ///< the one that follows
    int64_t start = 0;     ///< of that letter, had the paragraph one line
    int64_t endOfInk = 0;  ///< of the last letter before that is no blank
    bool isInsideWord = false;
    Cost cost;
    size_t previous = 0;  ///< where the last of these lines begins
};

std::vector<Break> findBreaks(const std::vector<BreakLetter>& letters) {
    std::vector<Break> breaks(1);
    int64_t at = 0, endOfInk = 0;
    for (size_t i = 0; i < letters.size(); ++i) {
        if (i > 0 && letters[i].before != BreakLetter::Before::Never)
            breaks.push_back({i, at, endOfInk, letters[i].before == BreakLetter::Before::InsideWord, {}, 0});
        at += letters[i].length;
        if (!letters[i].isBlank) endOfInk = at;
    }
    breaks.push_back({letters.size(), at, endOfInk, false, {}, 0});
    return breaks;
}

/// Of equal costs the shortest last line stays.
void findBestLines(std::vector<Break>& breaks, size_t end, int64_t lineLength) {
    Break& last = breaks[end];
    for (size_t begin = end; begin-- > 0;) {
        const auto length = double(last.endOfInk - breaks[begin].start);
        if (begin + 1 < end && length > double(lineLength)) break;
        Cost cost = breaks[begin].cost;
        cost.brokenWords += last.isInsideWord;
        cost.lines += 1;
        cost.squares += length * length;
        if (begin + 1 == end || cost < last.cost) {
            last.cost = cost;
            last.previous = begin;
        }
    }
}

}  // namespace

std::vector<size_t> balancedLineStarts(const std::vector<BreakLetter>& letters, int64_t lineLength) {
    std::vector<Break> breaks = findBreaks(letters);
    for (size_t end = 1; end < breaks.size(); ++end) findBestLines(breaks, end, lineLength);
    std::vector<size_t> starts;
    for (size_t at = breaks.size() - 1; at > 0; at = breaks[at].previous)
        starts.insert(starts.begin(), breaks[breaks[at].previous].letter);
    return starts;
}

}  // namespace platform
