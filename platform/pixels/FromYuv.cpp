#include "platform/pixels/FromYuv.h"

#include <algorithm>
#include <array>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/FromYuv.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include <hwy/highway.h>

// What does not depend on the instruction set is compiled in the first of these passes only.
#ifndef MULTISCENE_FROM_YUV_PLAIN
#define MULTISCENE_FROM_YUV_PLAIN
namespace platform {

// Samples are brought to 128 times 8-bit ones; weights are quarters in 1/32768. So products count in 1/32 of
// a level.
struct RgbWeights {
    int16_t black;      // 128 times the sample of black
    int16_t luma;       // of brightness in every colour
    int16_t red;        // of redness in red
    int16_t greenBlue;  // of blueness in green, taken away
    int16_t greenRed;   // of redness in green, taken away
    int16_t blue;       // of blueness in blue
};

// Rows are converted in parts of so many pixels.
constexpr int kPart = 1024;

// A part of a row of samples, on the way. `mixed` can be read and written one sample before and after.
struct Space {
    uint16_t before[kPart + 4], blueness[kPart + 2], redness[kPart + 2];
    uint16_t* mixed() { return before + 1; }
};

// The samples of a colour row lie 16 times an 8-bit sample apart, so this is grey.
constexpr uint16_t kGrey = 128 * 16;

// The same numbers one by one: for rows shorter than a vector, and for processors without vectors.
struct Plain {
    static int weighted(int sample, int16_t weight) { return (sample * weight + (1 << 14)) >> 15; }
    static uint8_t level(int value) { return static_cast<uint8_t>(std::clamp((value + 16) >> 5, 0, 255)); }

    template <class Sample>
    static void mix(const Sample* near, const Sample* far, size_t count, uint16_t* mixed) {
        for (size_t i = 0; i < count; ++i) mixed[i] = static_cast<uint16_t>(3 * near[i] + far[i]);
    }

    static void widen(const uint16_t* mixed, size_t count, int shift, uint16_t* row) {
        for (size_t i = 0; i < count; ++i) {
            const uint16_t* at = mixed + i;  // with neighbours on both sides
            row[2 * i] = static_cast<uint16_t>((3 * at[0] + at[-1]) >> shift);
            row[2 * i + 1] = static_cast<uint16_t>((3 * at[0] + at[1]) >> shift);
        }
    }

    static void scale(const uint16_t* mixed, size_t count, int shift, uint16_t* row) {
        for (size_t i = 0; i < count; ++i) row[i] = static_cast<uint16_t>(mixed[i] * 4 >> shift);
    }

    template <class Sample>
    static void colour(const Sample* luma, int lumaShift, const uint16_t* blueness, const uint16_t* redness,
                       size_t count, const RgbWeights& weights, uint8_t* pixels) {
        for (size_t i = 0; i < count; ++i) {
            const int grey = weighted((luma[i] << lumaShift) - weights.black, weights.luma);
            const int u = (blueness[i] - kGrey) * 8, v = (redness[i] - kGrey) * 8;
            uint8_t* pixel = pixels + 4 * i;
            pixel[2] = level(grey + weighted(v, weights.red));
            pixel[1] = level(grey - weighted(u, weights.greenBlue) - weighted(v, weights.greenRed));
            pixel[0] = level(grey + weighted(u, weights.blue));
            pixel[3] = 255;
        }
    }
};

}  // namespace platform
#endif

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

using Rows = Plain;

#else

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<uint16_t>;
using Levels = hn::ScalableTag<int16_t>;
using WordVector = hn::Vec<Words>;
using LevelVector = hn::Vec<Levels>;

// Calls `part` with the start of every vector of a row. The last one reaches back where the row does not
// divide: it writes the same numbers again. False when the row is shorter than a vector.
template <class Part>
HWY_INLINE bool forEachVector(size_t count, const Part& part) {
    const size_t lanes = hn::Lanes(Words());
    if (count < lanes) return false;
    size_t i = 0;
    for (; i + lanes <= count; i += lanes) part(i);
    if (i < count) part(count - lanes);
    return true;
}

HWY_INLINE WordVector loadSamples(const uint16_t* samples) { return hn::LoadU(Words(), samples); }
HWY_INLINE WordVector loadSamples(const uint8_t* samples) {
    return hn::PromoteTo(Words(), hn::LoadU(hn::Rebind<uint8_t, Words>(), samples));
}

// Three parts of the nearer neighbour, one of the farther.
HWY_INLINE WordVector blended(WordVector near, WordVector far) {
    return hn::Add(hn::Add(near, near), hn::Add(near, far));
}

HWY_INLINE LevelVector weighted(LevelVector sample, int16_t weight) {
    return hn::MulFixedPoint15(sample, hn::Set(Levels(), weight));
}

// Colour samples as signed numbers, 128 times 8-bit ones.
HWY_INLINE LevelVector chromaSamples(const uint16_t* row) {
    const LevelVector sample = hn::BitCast(Levels(), hn::LoadU(Words(), row));
    return hn::ShiftLeft<3>(hn::Sub(sample, hn::Set(Levels(), kGrey)));
}

// A level in the lower byte of 16 bits.
HWY_INLINE WordVector level(LevelVector value) {
    const LevelVector rounded = hn::ShiftRight<5>(hn::Add(value, hn::Set(Levels(), 16)));
    return hn::BitCast(Words(), hn::Min(hn::Max(rounded, hn::Zero(Levels())), hn::Set(Levels(), 255)));
}

struct Rows {
    template <class Sample>
    static void mix(const Sample* near, const Sample* far, size_t count, uint16_t* mixed) {
        const auto part = [&](size_t i) {
            hn::StoreU(blended(loadSamples(near + i), loadSamples(far + i)), Words(), mixed + i);
        };
        if (!forEachVector(count, part)) Plain::mix(near, far, count, mixed);
    }

    static void widen(const uint16_t* mixed, size_t count, int shift, uint16_t* row) {
        const auto part = [&](size_t i) {
            const WordVector here = hn::LoadU(Words(), mixed + i);
            const WordVector even = blended(here, hn::LoadU(Words(), mixed + i - 1));
            const WordVector odd = blended(here, hn::LoadU(Words(), mixed + i + 1));
            hn::StoreInterleaved2(hn::ShiftRightSame(even, shift), hn::ShiftRightSame(odd, shift), Words(),
                                  row + 2 * i);
        };
        if (!forEachVector(count, part)) Plain::widen(mixed, count, shift, row);
    }

    static void scale(const uint16_t* mixed, size_t count, int shift, uint16_t* row) {
        const auto part = [&](size_t i) {
            const WordVector four = hn::ShiftLeft<2>(hn::LoadU(Words(), mixed + i));
            hn::StoreU(hn::ShiftRightSame(four, shift), Words(), row + i);
        };
        if (!forEachVector(count, part)) Plain::scale(mixed, count, shift, row);
    }

    template <class Sample>
    static void colour(const Sample* luma, int lumaShift, const uint16_t* blueness, const uint16_t* redness,
                       size_t count, const RgbWeights weights, uint8_t* pixels) {
        const auto part = [&](size_t i) {
            const LevelVector sample =
                hn::BitCast(Levels(), hn::ShiftLeftSame(loadSamples(luma + i), lumaShift));
            const LevelVector grey =
                weighted(hn::Sub(sample, hn::Set(Levels(), weights.black)), weights.luma);
            const LevelVector u = chromaSamples(blueness + i), v = chromaSamples(redness + i);
            const WordVector red = level(hn::Add(grey, weighted(v, weights.red)));
            const WordVector green =
                level(hn::Sub(grey, hn::Add(weighted(u, weights.greenBlue), weighted(v, weights.greenRed))));
            const WordVector blue = level(hn::Add(grey, weighted(u, weights.blue)));
            const WordVector front = hn::Or(blue, hn::ShiftLeft<8>(green));
            const WordVector back = hn::Or(red, hn::Set(Words(), 0xFF00));
            hn::StoreInterleaved2(front, back, Words(), reinterpret_cast<uint16_t*>(pixels + 4 * i));
        };
        if (!forEachVector(count, part))
            Plain::colour(luma, lumaShift, blueness, redness, count, weights, pixels);
    }
};

#endif

template <class Sample>
const Sample* rowOf(const YuvPicture& picture, size_t plane, int y) {
    return reinterpret_cast<const Sample*>(picture.planes[plane] + y * picture.strides[plane]);
}

// What of a colour plane's row lies at the pixels from `from` on, the first of them even where colours are
// halved; its samples 16 times 8-bit ones.
template <class Sample>
void chromaRow(const YuvPicture& picture, size_t plane, int y, int from, int to, Space& space,
               uint16_t* row) {
    const int rows = picture.halfHeight ? (picture.height + 1) / 2 : picture.height;
    const int near = picture.halfHeight ? y / 2 : y;
    const int far = picture.halfHeight ? std::clamp(near + (y % 2 ? 1 : -1), 0, rows - 1) : near;
    const Sample *here = rowOf<Sample>(picture, plane, near), *there = rowOf<Sample>(picture, plane, far);
    uint16_t* const mixed = space.mixed();
    if (!picture.halfWidth) {
        const auto count = static_cast<size_t>(to - from);
        Rows::mix(here + from, there + from, count, mixed);
        return Rows::scale(mixed, count, picture.depth - 8, row);
    }
    const int first = from / 2, end = (to + 1) / 2, samples = (picture.width + 1) / 2;
    const int left = std::max(first - 1, 0), right = std::min(end + 1, samples);
    Rows::mix(here + left, there + left, static_cast<size_t>(right - left), mixed + left - first);
    if (left == first) mixed[-1] = mixed[0];
    if (right == end) mixed[end - first] = mixed[end - first - 1];
    Rows::widen(mixed, static_cast<size_t>(end - first), picture.depth - 8, row);
}

template <class Sample>
void convertPart(const YuvPicture& picture, const RgbWeights& weights, int y, int from, int to,
                 uint8_t* pixels) {
    Space space;
    const int even = picture.halfWidth ? from / 2 * 2 : from;
    chromaRow<Sample>(picture, 1, y, even, to, space, space.blueness);
    chromaRow<Sample>(picture, 2, y, even, to, space, space.redness);
    Rows::colour(rowOf<Sample>(picture, 0, y) + from, 15 - picture.depth, space.blueness + (from - even),
                 space.redness + (from - even), static_cast<size_t>(to - from), weights, pixels);
}

void convertRow(const YuvPicture& picture, const RgbWeights& weights, int y, int from, int to,
                uint8_t* pixels) {
    for (; from < to; from += kPart, pixels += kPart * 4) {
        const int end = std::min(from + kPart, to);
        if (picture.depth > 8)
            convertPart<uint16_t>(picture, weights, y, from, end, pixels);
        else
            convertPart<uint8_t>(picture, weights, y, from, end, pixels);
    }
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

namespace {

HWY_EXPORT(convertRow);

constexpr RgbWeights weightsOf(YuvMatrix matrix, bool fullRange) {
    const auto [red, blue] = brightnessOf(matrix);
    const double green = 1 - red - blue;
    const double luma = fullRange ? 1 : 255.0 / 219, chroma = fullRange ? 1 : 255.0 / 224;
    const auto quarter = [](double weight) { return static_cast<int16_t>(weight / 4 * 32768 + 0.5); };
    return {static_cast<int16_t>(fullRange ? 0 : 16 * 128),
            quarter(luma),
            quarter(chroma * 2 * (1 - red)),
            quarter(chroma * 2 * (1 - blue) * blue / green),
            quarter(chroma * 2 * (1 - red) * red / green),
            quarter(chroma * 2 * (1 - blue))};
}

constexpr std::array<RgbWeights, 2> bothRanges(YuvMatrix matrix) {
    return {weightsOf(matrix, false), weightsOf(matrix, true)};
}
constexpr std::array<std::array<RgbWeights, 2>, 3> kWeights{
    bothRanges(YuvMatrix::BT601), bothRanges(YuvMatrix::BT709), bothRanges(YuvMatrix::BT2020)};

}  // namespace

void yuvToPixels(const YuvPicture& picture, int row, int from, int to, uint8_t* pixels) {
    const RgbWeights& weights = kWeights[static_cast<size_t>(picture.matrix)][picture.fullRange];
    HWY_DYNAMIC_DISPATCH(convertRow)(picture, weights, row, from, to, pixels);
}

void yuvToPixels(const YuvPicture& picture, PixelBuffer& target) {
    target.resize(picture.width, picture.height);
    for (int row = 0; row < picture.height; ++row)
        yuvToPixels(picture, row, 0, picture.width,
                    target.data() + static_cast<ptrdiff_t>(row) * target.stride());
}

}  // namespace platform
#endif
