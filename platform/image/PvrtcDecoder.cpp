#include "platform/image/PvrtcDecoder.h"

#include <algorithm>
#include <array>
#include <bit>

namespace platform {

namespace {

constexpr int blockHeight = 4;
constexpr int blockBytes = 8;

int blockWidthOf(PvrtcBits bits) { return bits == PvrtcBits::Two ? 8 : 4; }

bool isPowerOfTwo(int value) { return value > 0 && std::has_single_bit(static_cast<unsigned>(value)); }

/// Red, green and blue in 5 bits, alpha in 4.
using Color = std::array<int, 4>;

/// A block's two colours, one behind the other.
using ColorPair = std::array<int, 8>;

int widen(uint32_t value, int bits) {
    const int shift = 5 - bits;
    return static_cast<int>(value << shift | value >> (bits - shift));
}

/// The first of a block's two colours; its lowest bit belongs to the modulation mode.
Color firstColor(uint32_t word) {
    if (word & 0x8000) return {int(word >> 10 & 31), int(word >> 5 & 31), widen(word >> 1 & 15, 4), 15};
    return {widen(word >> 8 & 15, 4), widen(word >> 4 & 15, 4), widen(word >> 1 & 7, 3),
            int(word >> 12 & 7) << 1};
}

Color secondColor(uint32_t word) {
    if (word & 0x80000000u) return {int(word >> 26 & 31), int(word >> 21 & 31), int(word >> 16 & 31), 15};
    return {widen(word >> 24 & 15, 4), widen(word >> 20 & 15, 4), widen(word >> 16 & 15, 4),
            int(word >> 28 & 7) << 1};
}

ColorPair joined(const Color& first, const Color& second) {
    return {first[0], first[1], first[2], first[3], second[0], second[1], second[2], second[3]};
}

/// One compressed level. Blocks lie in Morton order and wrap around at the edges.
class Level {
  public:
    Level(std::span<const uint8_t> data, int width, int height, PvrtcBits bits)
        : data_(data),
          bits_(bits),
          blockWidth_(blockWidthOf(bits)),
          width_(width),
          height_(height),
          columns_(width / blockWidth_),
          rows_(height / blockHeight) {
        readBlocks();
        if (bits == PvrtcBits::Two) fillGaps();
    }

    /// Writes the first `count` pixels of a row in RGBA.
    void writeRow(int y, int count, bool withAlpha, uint8_t* pixels) const;

  private:
    /// How a pixel of two bits finds its weight when the block does not hold it.
    enum Gap : uint8_t { None, Both, Horizontal, Vertical };
    static constexpr uint8_t punchThrough = 0x80;

    uint32_t word(size_t block, size_t half) const;
    size_t mortonIndex(int column, int row) const;
    void readBlocks();
    void readFourBits(uint32_t modulation, bool punch, int x, int y);
    void readTwoBits(uint32_t modulation, int x, int y);
    void readTwoBitsWithGaps(uint32_t modulation, int x, int y);
    void fillGaps();
    const ColorPair& block(int column, int row) const;
    ColorPair between(int column, int row, int v) const;
    int weight(int x, int y) const {
        return weights_[size_t(y & (height_ - 1)) * size_t(width_) + size_t(x & (width_ - 1))];
    }
    uint8_t& weightAt(int x, int y) { return weights_[size_t(y) * size_t(width_) + size_t(x)]; }
    void writePixel(const ColorPair& sums, int stored, uint8_t* pixel) const;

    std::span<const uint8_t> data_;
    PvrtcBits bits_;
    int blockWidth_, width_, height_, columns_, rows_;
    std::vector<ColorPair> blocks_;
    /// For every pixel the share of the second colour, 0 to 8.
    std::vector<uint8_t> weights_;
    std::vector<Gap> gaps_;  ///< of every block
};

uint32_t Level::word(size_t block, size_t half) const {
    const uint8_t* bytes = &data_[block * blockBytes + half * 4];
    return uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
}

/// Interleaves the bits of row and column as far as both have them; the rest of the longer side follows
/// above.
size_t Level::mortonIndex(int column, int row) const {
    const int shared = std::min(columns_, rows_);
    size_t index = 0;
    int bit = 0;
    for (int mask = 1; mask < shared; mask <<= 1, bit += 2) {
        if (row & mask) index |= size_t(1) << bit;
        if (column & mask) index |= size_t(2) << bit;
    }
    const int longer = columns_ > rows_ ? column : row;
    return index | size_t(longer / shared) << bit;
}

void Level::readBlocks() {
    blocks_.reserve(size_t(columns_) * size_t(rows_));
    weights_.resize(size_t(width_) * size_t(height_));
    gaps_.assign(size_t(columns_) * size_t(rows_), None);
    for (int row = 0; row < rows_; ++row)
        for (int column = 0; column < columns_; ++column) {
            const size_t index = mortonIndex(column, row);
            const uint32_t modulation = word(index, 0), colors = word(index, 1);
            const int x = column * blockWidth_, y = row * blockHeight;
            blocks_.push_back(joined(firstColor(colors), secondColor(colors)));
            if (bits_ == PvrtcBits::Four)
                readFourBits(modulation, colors & 1, x, y);
            else if (colors & 1)
                readTwoBitsWithGaps(modulation, x, y);
            else
                readTwoBits(modulation, x, y);
        }
}

void Level::readFourBits(uint32_t modulation, bool punch, int x, int y) {
    static constexpr std::array<uint8_t, 4> smooth{0, 3, 5, 8}, holes{0, 4, 4 | punchThrough, 8};
    for (int i = 0; i < 16; ++i, modulation >>= 2)
        weightAt(x + i % 4, y + i / 4) = (punch ? holes : smooth)[modulation & 3];
}

void Level::readTwoBits(uint32_t modulation, int x, int y) {
    for (int i = 0; i < 32; ++i, modulation >>= 1) weightAt(x + i % 8, y + i / 8) = modulation & 1 ? 8 : 0;
}

/// Every second pixel has two bits; the others are averaged from their neighbours. The lowest bits of the
/// first and of the middle pixel say how, and are taken to equal the pixel's other bit.
void Level::readTwoBitsWithGaps(uint32_t modulation, int x, int y) {
    static constexpr std::array<uint8_t, 4> smooth{0, 3, 5, 8};
    Gap gap = Both;
    if (modulation & 1) {
        gap = modulation >> 20 & 1 ? Vertical : Horizontal;
        modulation = (modulation & ~(1u << 20)) | (modulation >> 1 & 1u << 20);
    }
    modulation = (modulation & ~1u) | (modulation >> 1 & 1u);
    gaps_[size_t(y / blockHeight) * size_t(columns_) + size_t(x / blockWidth_)] = gap;
    for (int i = 0; i < 32; ++i) {
        if ((i % 8 + i / 8) % 2 != 0) continue;
        weightAt(x + i % 8, y + i / 8) = smooth[modulation & 3];
        modulation >>= 2;
    }
}

void Level::fillGaps() {
    for (int y = 0; y < height_; ++y)
        for (int x = (y + 1) % 2; x < width_; x += 2) {
            const Gap gap = gaps_[size_t(y / blockHeight) * size_t(columns_) + size_t(x / blockWidth_)];
            if (gap == None) continue;
            const int across = weight(x - 1, y) + weight(x + 1, y),
                      down = weight(x, y - 1) + weight(x, y + 1);
            const int average = gap == Both         ? (across + down + 2) / 4
                                : gap == Horizontal ? (across + 1) / 2
                                                    : (down + 1) / 2;
            weightAt(x, y) = static_cast<uint8_t>(average);
        }
}

const ColorPair& Level::block(int column, int row) const {
    return blocks_[size_t(row & (rows_ - 1)) * size_t(columns_) + size_t(column & (columns_ - 1))];
}

/// The colours of a block and of the one below it, mixed; four times as large.
ColorPair Level::between(int column, int row, int v) const {
    const ColorPair &above = block(column, row), &below = block(column, row + 1);
    ColorPair sums;
    for (size_t i = 0; i < sums.size(); ++i) sums[i] = above[i] * (blockHeight - v) + below[i] * v;
    return sums;
}

/// `sums` are colours between four block centres, as many times too large as a block has pixels.
void Level::writePixel(const ColorPair& sums, int stored, uint8_t* pixel) const {
    const int extra = bits_ == PvrtcBits::Two ? 1 : 0, share = stored & ~punchThrough;
    for (size_t i = 0; i < 4; ++i) {
        const int down = (i < 3 ? 1 : 0) + extra, repeat = (i < 3 ? 6 : 4) + extra;
        const int first = (sums[i] >> down) + (sums[i] >> repeat);
        const int second = (sums[i + 4] >> down) + (sums[i + 4] >> repeat);
        pixel[i] = uint8_t((first * (8 - share) + second * share) / 8);
    }
    if (stored & punchThrough) pixel[3] = 0;
}

void Level::writeRow(int y, int count, bool withAlpha, uint8_t* pixels) const {
    const int row = (y + blockHeight / 2) / blockHeight - 1, v = (y + blockHeight / 2) % blockHeight;
    ColorPair left{}, right{};
    for (int x = 0; x < count; ++x) {
        const int column = (x + blockWidth_ / 2) / blockWidth_ - 1, u = (x + blockWidth_ / 2) % blockWidth_;
        if (x == 0 || u == 0) {
            left = between(column, row, v);
            right = between(column + 1, row, v);
        }
        ColorPair sums;
        for (size_t i = 0; i < sums.size(); ++i) sums[i] = left[i] * (blockWidth_ - u) + right[i] * u;
        writePixel(sums, weight(x, y), pixels + 4 * x);
        if (!withAlpha) pixels[4 * x + 3] = 255;
    }
}

}  // namespace

uint64_t pvrtcLevelBytes(int width, int height, PvrtcBits bits) {
    const uint64_t columns = uint64_t(std::max(width / blockWidthOf(bits), 2));
    return columns * uint64_t(std::max(height / blockHeight, 2)) * blockBytes;
}

std::vector<uint8_t> decodePvrtc(std::span<const uint8_t> data, int width, int height, PvrtcBits bits,
                                 bool withAlpha) {
    if (!isPowerOfTwo(width) || !isPowerOfTwo(height) || data.size() < pvrtcLevelBytes(width, height, bits))
        return {};
    const Level level(data, std::max(width, 2 * blockWidthOf(bits)), std::max(height, 2 * blockHeight), bits);
    const size_t rowBytes = size_t(width) * 4;
    std::vector<uint8_t> pixels(rowBytes * size_t(height));
    for (int y = 0; y < height; ++y) level.writeRow(y, width, withAlpha, &pixels[size_t(y) * rowBytes]);
    return pixels;
}

}  // namespace platform
