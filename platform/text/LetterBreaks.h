// Where the letters and words of a text begin, as its readers count them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

/// Bytes, ascending, the first of them 0 unless the text is empty.
///
/// A letter is what its script takes for one: a letter with its marks, a conjunct of Devanagari, an emoji of
/// several parts, and letters that are joined as those of Arabic are, up to where they come apart. A word is
/// what a line may begin with: between blanks, in Thai by its dictionary; in Chinese and Japanese a
/// character.
struct LetterBreaks {
    std::vector<size_t> letters, words;
};

/// `text` is valid UTF-8.
LetterBreaks letterBreaks(const std::string& text);

}  // namespace platform
