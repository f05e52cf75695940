#include "tests/fuzz/Mutator.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace multiscene::fuzz {

namespace {

/// "\x41" and "\\" of a dictionary's word.
std::string unescaped(std::string_view text) {
    std::string word;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\' || at + 1 == text.size()) {
            word += text[at];
        } else if (text[at + 1] == 'x' && at + 3 < text.size()) {
            word += static_cast<char>(std::strtol(std::string(text.substr(at + 2, 2)).c_str(), nullptr, 16));
            at += 3;
        } else {
            word += text[++at];
        }
    }
    return word;
}

}  // namespace

Words dictionaryOf(std::string_view name) {
    Words words;
    std::ifstream file(std::filesystem::path(MULTISCENE_FUZZ_CORPUS).parent_path() / "dictionaries" /
                       (std::string(name) + ".dict"));
    for (std::string line; std::getline(file, line);)
        if (line.size() > 2 && line.front() == '"' && line.back() == '"')
            words.push_back(unescaped(std::string_view(line).substr(1, line.size() - 2)));
    return words;
}

std::vector<uint8_t> Mutator::next() {
    std::vector<uint8_t> bytes = anyFile();
    for (size_t changes = 1 + below(8); changes > 0; --changes) change(bytes);
    bytes.resize(std::min(bytes.size(), mostBytes_));
    return bytes;
}

void Mutator::change(std::vector<uint8_t>& bytes) {
    if (bytes.empty()) bytes.push_back(static_cast<uint8_t>(random_()));
    const size_t at = below(bytes.size()), length = 1 + below(std::min<size_t>(bytes.size() - at, 64));
    const auto begin = bytes.begin() + static_cast<ptrdiff_t>(at),
               end = begin + static_cast<ptrdiff_t>(length);
    switch (below(8)) {
        case 0:
            bytes[at] = static_cast<uint8_t>(random_());
            break;
        case 1:
            bytes[at] ^= static_cast<uint8_t>(1u << below(8));
            break;
        case 2:
            bytes.erase(begin, end);
            break;
        case 3:
            splice(bytes, at);
            break;
        case 4:
            replaceDigits(bytes, at);
            break;
        case 5:
            bytes.resize(at);
            break;
        case 6:
            if (!words_.empty()) put(bytes, at, words_[below(words_.size())], below(2) ? 0 : length);
            break;
        default: {
            static constexpr uint8_t extremes[] = {0x00, 0x7F, 0x80, 0xFF};
            std::fill(begin, begin + static_cast<ptrdiff_t>(std::min<size_t>(length, 4)), extremes[below(4)]);
        }
    }
}

void Mutator::put(std::vector<uint8_t>& bytes, size_t at, std::string_view word, size_t replaced) {
    const auto begin = bytes.begin() + static_cast<ptrdiff_t>(at);
    bytes.insert(bytes.erase(begin, begin + static_cast<ptrdiff_t>(replaced)), word.begin(), word.end());
}

/// Text formats break on numbers, not on bytes.
void Mutator::replaceDigits(std::vector<uint8_t>& bytes, size_t from) {
    static constexpr std::string_view numbers[] = {"-1",   "0",   "99999999999999999999", "2147483648",
                                                   "1e39", "nan", "9223372036854775807",  "-0.0"};
    const auto isDigit = [](uint8_t byte) { return std::isdigit(byte) != 0; };
    const auto start = bytes.begin() + static_cast<ptrdiff_t>(from);
    const auto begin = std::find_if(start, bytes.end(), isDigit);
    if (begin == bytes.end()) return;
    const auto end = std::find_if_not(begin, bytes.end(), isDigit);
    put(bytes, static_cast<size_t>(begin - bytes.begin()), numbers[below(std::size(numbers))],
        static_cast<size_t>(end - begin));
}

/// A part of another file, or of this one.
void Mutator::splice(std::vector<uint8_t>& bytes, size_t at) {
    const std::vector<uint8_t>& other = anyFile();
    if (other.empty()) return;
    const size_t from = below(other.size()), length = 1 + below(std::min<size_t>(other.size() - from, 256));
    const auto part = other.begin() + static_cast<ptrdiff_t>(from);
    bytes.insert(bytes.begin() + static_cast<ptrdiff_t>(at), part, part + static_cast<ptrdiff_t>(length));
}

}  // namespace multiscene::fuzz
