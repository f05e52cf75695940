#include "platform/pixels/FromYuv.h"

#include <algorithm>

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

// Rows of work space; `mixed` can be read one sample before and after the row.
struct Space {
    uint16_t *mixed, *blueness, *redness;
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

// One row of a colour plane, as wide as the picture, its samples 16 times 8-bit ones.
template <class Sample>
void chromaRow(const YuvPicture& picture, size_t plane, int y, uint16_t* mixed, uint16_t* row) {
    const int rows = picture.halfHeight ? (picture.height + 1) / 2 : picture.height;
    const int near = picture.halfHeight ? y / 2 : y;
    const int far = picture.halfHeight ? std::clamp(near + (y % 2 ? 1 : -1), 0, rows - 1) : near;
    const auto count = static_cast<size_t>(picture.halfWidth ? (picture.width + 1) / 2 : picture.width);
    Rows::mix(rowOf<Sample>(picture, plane, near), rowOf<Sample>(picture, plane, far), count, mixed);
    if (!picture.halfWidth) return Rows::scale(mixed, count, picture.depth - 8, row);
    mixed[-1] = mixed[0];
    mixed[count] = mixed[count - 1];
    Rows::widen(mixed, count, picture.depth - 8, row);
}

template <class Sample>
void convertPicture(const YuvPicture& picture, const RgbWeights& weights, const Space& space,
                    PixelBuffer& target) {
    for (int y = 0; y < picture.height; ++y) {
        chromaRow<Sample>(picture, 1, y, space.mixed, space.blueness);
        chromaRow<Sample>(picture, 2, y, space.mixed, space.redness);
        Rows::colour(rowOf<Sample>(picture, 0, y), 15 - picture.depth, space.blueness, space.redness,
                     static_cast<size_t>(picture.width), weights,
                     target.data() + static_cast<size_t>(y) * target.stride());
    }
}

void convertYuv(const YuvPicture& picture, const RgbWeights& weights, const Space& space,
                PixelBuffer& target) {
    if (picture.depth > 8)
        convertPicture<uint16_t>(picture, weights, space, target);
    else
        convertPicture<uint8_t>(picture, weights, space, target);
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

namespace {

HWY_EXPORT(convertYuv);

RgbWeights weightsOf(const YuvPicture& picture) {
    const auto [red, blue] = brightnessOf(picture.matrix);
    const double green = 1 - red - blue;
    const double luma = picture.fullRange ? 1 : 255.0 / 219, chroma = picture.fullRange ? 1 : 255.0 / 224;
    const auto quarter = [](double weight) { return static_cast<int16_t>(weight / 4 * 32768 + 0.5); };
    return {static_cast<int16_t>(picture.fullRange ? 0 : 16 * 128),
            quarter(luma),
            quarter(chroma * 2 * (1 - red)),
            quarter(chroma * 2 * (1 - blue) * blue / green),
            quarter(chroma * 2 * (1 - red) * red / green),
            quarter(chroma * 2 * (1 - blue))};
}

}  // namespace

void YuvConverter::convert(const YuvPicture& picture, PixelBuffer& target) {
    target.resize(picture.width, picture.height);
    const auto width = static_cast<size_t>(picture.width) + 1;  // halved colours give an even number
    mixed_.resize(width + 2);
    blueness_.resize(width);
    redness_.resize(width);
    const Space space{mixed_.data() + 1, blueness_.data(), redness_.data()};
    HWY_DYNAMIC_DISPATCH(convertYuv)(picture, weightsOf(picture), space, target);
}

}  // namespace platform
#endif
