#include "platform/pixels/ToI420.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/ToI420.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include <hwy/highway.h>

// What does not depend on the instruction set is compiled in the first of these passes only.
#ifndef MULTISCENE_TO_I420_WEIGHTS
#define MULTISCENE_TO_I420_WEIGHTS
namespace platform {

// Weights in 1/65536. Colours stand in the upper byte of 16 bits, so the high half of a product is the
// weighted colour in 1/256: brightness and colour come out within 3/256 of the exact number before they are
// rounded.
struct YuvWeights {
    uint16_t yRed, yGreen, yBlue;
    uint16_t uRed, uGreen;   // taken away
    uint16_t vGreen, vBlue;  // taken away
    uint16_t own;            // of blue in u, and of red in v
};

constexpr YuvWeights weights(YuvMatrix matrix) {
    const auto [red, blue] = brightnessOf(matrix);
    const double green = 1 - red - blue;
    const double luma = 219.0 / 255 * 65536, chroma = 112.0 / 255 * 65536;
    const auto rounded = [](double weight) { return static_cast<uint16_t>(weight + 0.5); };
    return {rounded(luma * red),
            rounded(luma * green),
            rounded(luma * blue),
            rounded(chroma * red / (1 - blue)),
            rounded(chroma * green / (1 - blue)),
            rounded(chroma * green / (1 - red)),
            rounded(chroma * blue / (1 - red)),
            rounded(chroma)};
}

constexpr uint16_t kLumaBase = 16 * 256 + 128;     // black, and a half to round
constexpr uint16_t kChromaBase = 128 * 256 + 128;  // grey, and a half to round

// Two rows of a picture and where they go.
struct RowPair {
    const uint8_t* upper;
    const uint8_t* lower;
    uint8_t* upperY;
    uint8_t* lowerY;
    uint8_t* u;
    uint8_t* v;

    RowPair from(size_t x) const {
        return {upper + x * 4, lower + x * 4, upperY + x, lowerY + x, u + x / 2, v + x / 2};
    }
};

// The same numbers one by one: for what is left of a row, and for processors without vectors.
inline unsigned weightedColour(unsigned colour, unsigned weight) { return colour * weight >> 16; }

inline uint8_t plainLuma(const uint8_t* pixel, const YuvWeights& weights) {
    const unsigned red = pixel[2] << 8, green = pixel[1] << 8, blue = pixel[0] << 8;
    return static_cast<uint8_t>((weightedColour(red, weights.yRed) + weightedColour(green, weights.yGreen) +
                                 weightedColour(blue, weights.yBlue) + kLumaBase) >>
                                8);
}

inline void convertPlainly(const RowPair& rows, size_t width, const YuvWeights& weights) {
    for (size_t x = 0; x < width; ++x) {
        rows.upperY[x] = plainLuma(rows.upper + x * 4, weights);
        rows.lowerY[x] = plainLuma(rows.lower + x * 4, weights);
    }
    for (size_t x = 0; x < width; x += 2) {
        const auto mean = [&](size_t channel) {
            const size_t at = x * 4 + channel;
            return static_cast<unsigned>(rows.upper[at] + rows.upper[at + 4] + rows.lower[at] +
                                         rows.lower[at + 4])
                   << 6;
        };
        const unsigned red = mean(2), green = mean(1), blue = mean(0);
        rows.u[x / 2] = static_cast<uint8_t>((kChromaBase + weightedColour(blue, weights.own) -
                                              weightedColour(red, weights.uRed) -
                                              weightedColour(green, weights.uGreen)) >>
                                             8);
        rows.v[x / 2] = static_cast<uint8_t>((kChromaBase + weightedColour(red, weights.own) -
                                              weightedColour(green, weights.vGreen) -
                                              weightedColour(blue, weights.vBlue)) >>
                                             8);
    }
}

}  // namespace platform
#endif

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

void convertTwoRows(const RowPair rows, size_t width, const YuvWeights weights) {
    convertPlainly(rows, width, weights);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<uint16_t>;
using WordVector = hn::Vec<Words>;
using Numbers = hn::Repartition<uint32_t, Words>;

HWY_INLINE WordVector weighted(WordVector colour, uint16_t weight) {
    return hn::MulHigh(colour, hn::Set(Words(), weight));
}
HWY_INLINE WordVector upperByte(WordVector words) { return hn::And(words, hn::Set(Words(), 0xFF00)); }
HWY_INLINE WordVector lowerByte(WordVector words) { return hn::And(words, hn::Set(Words(), 0x00FF)); }

// As many pixels as a vector has words: blue and green of each, and red and alpha.
struct Pixels {
    WordVector front, back;
};

HWY_INLINE Pixels load(const uint8_t* pixels) {
    Pixels loaded;
    hn::LoadInterleaved2(Words(), reinterpret_cast<const uint16_t*>(pixels), loaded.front, loaded.back);
    return loaded;
}

HWY_INLINE void storeLuma(const Pixels& pixels, const YuvWeights& weights, uint8_t* y) {
    const WordVector blue = weighted(hn::ShiftLeft<8>(pixels.front), weights.yBlue);
    const WordVector green = weighted(upperByte(pixels.front), weights.yGreen);
    const WordVector red = weighted(hn::ShiftLeft<8>(pixels.back), weights.yRed);
    const WordVector luma = hn::Add(hn::Add(blue, green), hn::Add(red, hn::Set(Words(), kLumaBase)));
    const hn::Rebind<uint8_t, Words> bytes;
    hn::StoreU(hn::DemoteTo(bytes, hn::BitCast(hn::RebindToSigned<Words>(), hn::ShiftRight<8>(luma))), bytes,
               y);
}

// The sum of four pixels, brought to the upper bits. Only every other word of the result means something.
HWY_INLINE WordVector mean(WordVector upper, WordVector lower) {
    const WordVector columns = hn::Add(upper, lower);
    const WordVector beside = hn::BitCast(Words(), hn::ShiftRight<16>(hn::BitCast(Numbers(), columns)));
    return hn::ShiftLeft<6>(hn::Add(columns, beside));
}

// Every other word's upper byte.
HWY_INLINE void storeEveryOther(WordVector words, uint8_t* bytes) {
    const hn::Rebind<uint8_t, Numbers> quarter;
    const auto numbers = hn::And(hn::ShiftRight<8>(hn::BitCast(Numbers(), words)), hn::Set(Numbers(), 0xFF));
    hn::StoreU(hn::DemoteTo(quarter, hn::BitCast(hn::RebindToSigned<Numbers>(), numbers)), quarter, bytes);
}

HWY_INLINE void storeChroma(const Pixels& upper, const Pixels& lower, const YuvWeights& weights, uint8_t* u,
                            uint8_t* v) {
    const WordVector blue = mean(lowerByte(upper.front), lowerByte(lower.front));
    const WordVector green = mean(hn::ShiftRight<8>(upper.front), hn::ShiftRight<8>(lower.front));
    const WordVector red = mean(lowerByte(upper.back), lowerByte(lower.back));
    const WordVector base = hn::Set(Words(), kChromaBase);
    storeEveryOther(hn::Sub(hn::Add(base, weighted(blue, weights.own)),
                            hn::Add(weighted(red, weights.uRed), weighted(green, weights.uGreen))),
                    u);
    storeEveryOther(hn::Sub(hn::Add(base, weighted(red, weights.own)),
                            hn::Add(weighted(green, weights.vGreen), weighted(blue, weights.vBlue))),
                    v);
}

void convertTwoRows(const RowPair rows, size_t width, const YuvWeights weights) {
    const size_t lanes = hn::Lanes(Words());
    size_t x = 0;
    for (; x + lanes <= width; x += lanes) {
        const RowPair here = rows.from(x);
        const Pixels upper = load(here.upper), lower = load(here.lower);
        storeLuma(upper, weights, here.upperY);
        storeLuma(lower, weights, here.lowerY);
        storeChroma(upper, lower, weights, here.u, here.v);
    }
    convertPlainly(rows.from(x), width - x, weights);
}

#endif

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

HWY_EXPORT(convertTwoRows);

void toI420(const PixelBuffer& picture, YuvMatrix matrix, const I420Planes& planes) {
    const auto convert = HWY_DYNAMIC_DISPATCH(convertTwoRows);
    const YuvWeights weighing = weights(matrix);
    const ptrdiff_t stride = picture.stride();
    const uint8_t* row = picture.data();
    for (int y = 0; y < picture.height(); y += 2, row += 2 * stride) {
        uint8_t* luma = planes.y + y * planes.yStride;
        const RowPair pair{row,
                           row + stride,
                           luma,
                           luma + planes.yStride,
                           planes.u + y / 2 * planes.uStride,
                           planes.v + y / 2 * planes.vStride};
        convert(pair, static_cast<size_t>(picture.width()), weighing);
    }
}

}  // namespace platform
#endif
