#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace multiscene {

/// The candidate that a misspelt word most likely means; empty when none comes near.
std::string closestWord(std::string_view word, const std::vector<std::string_view>& candidates);

/// "did you mean "x"?" for the closest candidate, else empty.
std::string didYouMean(std::string_view word, const std::vector<std::string_view>& candidates);

}  // namespace multiscene
