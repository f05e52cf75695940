// Chooses where the lines of a paragraph break. For the files of this folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace platform {

/// One character as line breaking sees it.
struct BreakLetter {
    enum class Before { Never, InsideWord, BetweenWords };

    int64_t length = 0;             ///< along the line, any unit
    bool isBlank = false;           ///< takes no room at a line's end
    Before before = Before::Never;  ///< whether a line may begin with it
};

/// The first character of each line, such that as few words are broken as can be, then as few lines are
/// needed as can be, and of such choices the one with the most even lines; the longer lines come first. A
/// piece that nothing may break is on a line of its own when it is longer than `lineLength`. The letters are
/// one paragraph, at least one.
std::vector<size_t> balancedLineStarts(const std::vector<BreakLetter>& letters, int64_t lineLength);

}  // namespace platform
