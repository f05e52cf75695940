// Mutations for where there is no libFuzzer: no feedback, but the same seeds and words.
#pragma once

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

using Words = std::vector<std::string>;

/// The words of tests/fuzz/dictionaries/NAME.dict; none where there is no such file.
Words dictionaryOf(std::string_view name);

/// Always the same sequence. The corpus outlives it.
class Mutator {
  public:
    Mutator(const std::vector<std::vector<uint8_t>>& corpus, Words words, size_t mostBytes)
        : corpus_(corpus), words_(std::move(words)), mostBytes_(mostBytes) {}

    /// A file of the corpus with one to eight changes.
    std::vector<uint8_t> next();

  private:
    size_t below(size_t count) { return random_() % count; }
    const std::vector<uint8_t>& anyFile() { return corpus_[below(corpus_.size())]; }
    void change(std::vector<uint8_t>& bytes);
    void put(std::vector<uint8_t>& bytes, size_t at, std::string_view word, size_t replaced);
    void replaceDigits(std::vector<uint8_t>& bytes, size_t from);
    void splice(std::vector<uint8_t>& bytes, size_t at);

    const std::vector<std::vector<uint8_t>>& corpus_;
    Words words_;
    size_t mostBytes_;
    std::mt19937 random_{20240229};
};

}  // namespace multiscene::fuzz
