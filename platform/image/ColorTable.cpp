#include "platform/image/ColorTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace platform {

namespace {

[[noreturn]] void fail(int line, const std::string& problem) {
    throw Error(ErrorKind::Template, "line " + std::to_string(line) + " " + problem);
}

/// The words of a line.
std::vector<std::string_view> wordsOf(std::string_view line) {
    constexpr std::string_view spaces = " \t\r";
    constexpr size_t most = 5;  // no line that counts has more
    std::vector<std::string_view> words;
    while (words.size() < most) {
        line.remove_prefix(std::min(line.find_first_not_of(spaces), line.size()));
        if (line.empty()) break;
        const size_t length = std::min(line.find_first_of(spaces), line.size());
        words.push_back(line.substr(0, length));
        line.remove_prefix(length);
    }
    return words;
}

bool readNumber(std::string_view word, double& number) {
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    return fault == std::errc() && end == word.data() + word.size() && std::isfinite(number);
}

/// Three numbers from the word `first` on.
bool readNumbers(const std::vector<std::string_view>& words, size_t first, std::array<double, 3>& numbers) {
    if (words.size() != first + 3) return false;
    for (size_t i = 0; i < 3; ++i)
        if (!readNumber(words[first + i], numbers[i])) return false;
    return true;
}

uint8_t byteOf(double part) { return static_cast<uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255)); }

/// A file's lines, each as what it means.
class TableText {
  public:
    void line(std::string_view text) {
        ++number_;
        const std::vector<std::string_view> words = wordsOf(text);
        if (words.empty() || words.front().starts_with('#') || words.front() == "TITLE") return;
        if (words.front() == "LUT_3D_SIZE") return readSide(words);
        if (words.front() == "DOMAIN_MIN") return requireDomain(words, 0);
        if (words.front() == "DOMAIN_MAX") return requireDomain(words, 1);
        readColor(words);
    }
    int side() const {
        if (side_ == 0) fail(number_, "ends a table without LUT_3D_SIZE");
        if (colors_.size() < wanted())
            fail(number_, "ends a table of " + std::to_string(colors_.size()) +
                              " colours; there have to be " + std::to_string(wanted()));
        return side_;
    }
    const std::vector<std::array<double, 3>>& colors() const { return colors_; }

  private:
    size_t wanted() const { return static_cast<size_t>(side_) * static_cast<size_t>(side_ * side_); }

    void readSide(const std::vector<std::string_view>& words) {
        double side = 0;
        if (side_ != 0 || words.size() != 2 || !readNumber(words[1], side) || side != std::floor(side) ||
            side < 2 || side > ColorTable::maxSide)
            fail(number_, "does not say a size from 2 to " + std::to_string(ColorTable::maxSide) + ", once");
        side_ = static_cast<int>(side);
        colors_.reserve(wanted());
    }
    void requireDomain(const std::vector<std::string_view>& words, double all) const {
        std::array<double, 3> numbers{};
        if (!readNumbers(words, 1, numbers) || numbers != std::array{all, all, all})
            fail(number_, "wants another range of colours than 0 to 1");
    }
    void readColor(const std::vector<std::string_view>& words) {
        std::array<double, 3> color{};
        if (!readNumbers(words, 0, color)) fail(number_, "is no colour of three numbers");
        if (side_ == 0) fail(number_, "is a colour before LUT_3D_SIZE");
        if (colors_.size() == wanted()) fail(number_, "is one colour more than the size asks for");
        colors_.push_back(color);
    }

    int number_ = 0, side_ = 0;
    std::vector<std::array<double, 3>> colors_;
};

}  // namespace

ColorTable ColorTable::parse(std::string_view text) {
    TableText lines;
    for (size_t end; !text.empty(); text.remove_prefix(end)) {
        end = std::min(text.find('\n'), text.size() - 1) + 1;
        lines.line(text.substr(0, text[end - 1] == '\n' ? end - 1 : end));
    }
    ColorTable table;
    const auto side = static_cast<size_t>(lines.side());
    table.side_ = lines.side();
    table.pixels_.resize(side * side * side * 4);
    for (size_t i = 0; i < lines.colors().size(); ++i) {
        const auto& [red, green, blue] = lines.colors()[i];
        const size_t x = i % side + i / (side * side) * side, y = i / side % side;
        const std::array<uint8_t, 4> pixel{byteOf(blue), byteOf(green), byteOf(red), 255};
        std::copy(pixel.begin(), pixel.end(),
                  table.pixels_.begin() + static_cast<ptrdiff_t>((y * side * side + x) * 4));
    }
    return table;
}

ColorTable ColorTable::read(const std::filesystem::path& file) {
    const std::vector<uint8_t> bytes = readFile(file, maxBytes, ErrorKind::Template);
    return parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

ColorTable ColorTable::read(const FileHandle& file, const std::string& name) {
    const std::vector<uint8_t> bytes = readFile(file, name, maxBytes, ErrorKind::Template);
    return parse({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

Surface ColorTable::picture() const {
    return {.pixels = pixels_.data(),
            .stride = ptrdiff_t{side_} * side_ * 4,
            .width = side_ * side_,
            .height = side_,
            .opaque = true};
}

}  // namespace platform
