// Letters that hang together: those of Arabic and its kin, of Devanagari and the like. For the files of this
// folder.
#pragma once

#include <cstddef>
#include <vector>

namespace platform {

/// Bytes of a text, `end` lying beyond them.
struct TextRange {
    size_t start, end;
};

/// Where letters may be moved apart: everywhere but in scripts whose letters are joined to words. `text` is
/// valid UTF-8 and ends with a 0.
std::vector<TextRange> separableRanges(const char* text);

/// The bytes at which a letter begins that is joined to the one before it.
std::vector<size_t> joinedLetters(const char* text);

}  // namespace platform
