#include "app/check/Suggestion.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace multiscene {

namespace {

// The format spells the ends of a range differently from place to place; whoever writes one of them in the
// wrong place means the one that is read there.
constexpr std::array<std::array<std::string_view, 3>, 2> kSameMeaning{{
    {"sartFps", "startFps", "fpsStart"},
    {"endFps", "fpsEnd", "endFPS"},
}};

char lower(char letter) { return static_cast<char>(std::tolower(static_cast<unsigned char>(letter))); }

/// Letters to insert, delete or replace; case counts for nothing.
size_t editDistance(std::string_view left, std::string_view right) {
    std::vector<size_t> row(right.size() + 1);
    for (size_t column = 0; column <= right.size(); ++column) row[column] = column;
    for (size_t line = 1; line <= left.size(); ++line) {
        size_t diagonal = row[0];
        row[0] = line;
        for (size_t column = 1; column <= right.size(); ++column) {
            const size_t replaced = diagonal + (lower(left[line - 1]) != lower(right[column - 1]));
            diagonal = row[column];
            row[column] = std::min({row[column] + 1, row[column - 1] + 1, replaced});
        }
    }
    return row.back();
}

std::string_view sameMeaning(std::string_view word, const std::vector<std::string_view>& candidates) {
    for (const auto& family : kSameMeaning) {
        if (std::find(family.begin(), family.end(), word) == family.end()) continue;
        for (const std::string_view member : family)
            if (std::find(candidates.begin(), candidates.end(), member) != candidates.end()) return member;
    }
    return {};
}

}  // namespace

std::string closestWord(std::string_view word, const std::vector<std::string_view>& candidates) {
    if (const std::string_view member = sameMeaning(word, candidates); !member.empty())
        return std::string(member);
    std::string_view best;
    size_t bestDistance = std::max<size_t>(2, word.size() / 3) + 1;
    for (const std::string_view candidate : candidates) {
        const size_t distance = editDistance(word, candidate);
        if (distance >= bestDistance || distance >= candidate.size()) continue;
        best = candidate;
        bestDistance = distance;
    }
    return std::string(best);
}

std::string didYouMean(std::string_view word, const std::vector<std::string_view>& candidates) {
    const std::string closest = closestWord(word, candidates);
    return closest.empty() ? std::string() : "did you mean \"" + closest + "\"?";
}

}  // namespace multiscene
