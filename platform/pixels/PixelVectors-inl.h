// Private to platform/pixels: vectors of pixels and what is done to them everywhere.
// Included once for each instruction set.
#if defined(MULTISCENE_PIXELVECTORS) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_PIXELVECTORS
#undef MULTISCENE_PIXELVECTORS
#else
#define MULTISCENE_PIXELVECTORS
#endif

#include <hwy/highway.h>

#include "platform/pixels/QuadPaint.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Pixels = hn::ScalableTag<uint32_t>;
using Places = hn::RebindToSigned<Pixels>;
using Reals = hn::RebindToFloat<Pixels>;
using Words = hn::Repartition<uint16_t, Pixels>;
using PixelVector = hn::Vec<Pixels>;
using PlaceVector = hn::Vec<Places>;
using RealVector = hn::Vec<Reals>;
using WordVector = hn::Vec<Words>;

HWY_INLINE RealVector real(float number) { return hn::Set(Reals(), number); }

HWY_INLINE RealVector columns(int first) {
    return hn::Add(real(static_cast<float>(first)), hn::Iota(Reals(), 0.0f));
}

// Blue and red, and green and alpha, each in 16 bits.
struct Halves {
    WordVector even, odd;
};

HWY_INLINE Halves halves(PixelVector pixels) {
    const PixelVector mask = hn::Set(Pixels(), 0x00FF00FF);
    return {hn::BitCast(Words(), hn::And(pixels, mask)),
            hn::BitCast(Words(), hn::And(hn::ShiftRight<8>(pixels), mask))};
}

HWY_INLINE PixelVector whole(const Halves& halves) {
    return hn::Or(hn::BitCast(Pixels(), halves.even), hn::ShiftLeft<8>(hn::BitCast(Pixels(), halves.odd)));
}

// A number below 65536 in both halves of each pixel.
HWY_INLINE WordVector twice(PixelVector number) {
    return hn::BitCast(Words(), hn::Or(number, hn::ShiftLeft<16>(number)));
}

// a + (b - a) * part / 256, rounded.
HWY_INLINE WordVector mixed(WordVector a, WordVector b, WordVector part) {
    const WordVector rest = hn::Sub(hn::Set(Words(), 256), part);
    const WordVector sum = hn::Add(hn::Mul(a, rest), hn::Add(hn::Mul(b, part), hn::Set(Words(), 128)));
    return hn::ShiftRight<8>(sum);
}

HWY_INLINE Halves mixed(const Halves& a, const Halves& b, WordVector part) {
    return {mixed(a.even, b.even, part), mixed(a.odd, b.odd, part)};
}

// colour * level / 255, rounded exactly.
HWY_INLINE WordVector scaled(WordVector colour, WordVector level) {
    const WordVector product = hn::Add(hn::Mul(colour, level), hn::Set(Words(), 128));
    return hn::ShiftRight<8>(hn::Add(product, hn::ShiftRight<8>(product)));
}

HWY_INLINE Halves scaled(const Halves& colours, WordVector level) {
    return {scaled(colours.even, level), scaled(colours.odd, level)};
}

// Pixels of a row: `count` from `column` on. Places are counted from the tile's first column, the origin, so
// that they do not depend on where a run begins.
struct Lookup {
    int origin, column, row, count;
};

// A number at whole columns of a row: first + step * (column - origin) of a place matrix's row.
struct Slope {
    RealVector first, step;

    HWY_INLINE RealVector at(RealVector column) const { return hn::Add(first, hn::Mul(step, column)); }
};

// Within a tile single precision is ample.
HWY_INLINE Slope slope(const PlaceMatrix& m, size_t line, const Lookup& lookup) {
    const double first = m[line * 3] * lookup.origin + m[line * 3 + 1] * lookup.row + m[line * 3 + 2];
    return {real(static_cast<float>(first)), real(static_cast<float>(m[line * 3]))};
}

// 1 / q, by which numbers of slopes are multiplied.
class Depth {
  public:
    Depth(const PlaceMatrix& m, bool perspective, const Lookup& lookup)
        : q_(slope(m, 2, lookup)), perspective_(perspective) {}

    HWY_INLINE RealVector at(RealVector column) const {
        return perspective_ ? hn::Div(real(1), q_.at(column)) : real(1);
    }

  private:
    Slope q_;
    bool perspective_;
};

// Blue, green, red and alpha, each 0 to 255.
struct Channels {
    RealVector blue, green, red, alpha;
};

HWY_INLINE RealVector channel(PixelVector pixels) {
    return hn::ConvertTo(Reals(), hn::BitCast(Places(), hn::And(pixels, hn::Set(Pixels(), 0xFF))));
}

HWY_INLINE Channels channels(PixelVector pixels) {
    return {channel(pixels), channel(hn::ShiftRight<8>(pixels)), channel(hn::ShiftRight<16>(pixels)),
            channel(hn::ShiftRight<24>(pixels))};
}

HWY_INLINE RealVector bounded(RealVector number, float least, float most) {
    return hn::Min(hn::Max(number, real(least)), real(most));
}

HWY_INLINE RealVector between(RealVector a, RealVector b, RealVector part) {
    return hn::Add(a, hn::Mul(hn::Sub(b, a), part));
}

// sin(2 pi x), to 0.000004.
HWY_INLINE RealVector sineOfTurns(RealVector x) {
    // From -1/2 to 1/2, then folded to a quarter.
    const RealVector turn = hn::Sub(x, hn::Floor(hn::Add(x, real(0.5f))));
    const RealVector size = hn::Abs(turn), folded = hn::Min(size, hn::Sub(real(0.5f), size));
    const RealVector angle = hn::Mul(hn::CopySign(folded, turn), real(6.2831853f));
    const RealVector square = hn::Mul(angle, angle);
    RealVector sum = hn::Add(hn::Mul(square, real(1.0f / 362880)), real(-1.0f / 5040));
    for (const float next : {1.0f / 120, -1.0f / 6, 1.0f}) sum = hn::Add(hn::Mul(square, sum), real(next));
    return hn::Mul(angle, sum);
}

// To the next whole number from 0 to 255.
HWY_INLINE PixelVector rounded(RealVector number) {
    return hn::BitCast(Pixels(), hn::ConvertTo(Places(), hn::Add(bounded(number, 0, 255), real(0.5f))));
}

HWY_INLINE PixelVector packed(const Channels& c) {
    const PixelVector low = hn::Or(rounded(c.blue), hn::ShiftLeft<8>(rounded(c.green)));
    const PixelVector high = hn::Or(rounded(c.red), hn::ShiftLeft<8>(rounded(c.alpha)));
    return hn::Or(low, hn::ShiftLeft<16>(high));
}

HWY_INLINE RealVector brightness(const Channels& c) {
    const RealVector redGreen = hn::Add(hn::Mul(c.red, real(0.299f)), hn::Mul(c.green, real(0.587f)));
    return hn::Add(redGreen, hn::Mul(c.blue, real(0.114f)));
}

// Alpha in all four bytes of a pixel.
HWY_INLINE PixelVector alphas(PixelVector pixels) {
    const PixelVector alpha = hn::ShiftRight<24>(pixels);
    const PixelVector two = hn::Or(alpha, hn::ShiftLeft<8>(alpha));
    return hn::Or(two, hn::ShiftLeft<16>(two));
}

HWY_INLINE PixelVector multipliedByAlpha(PixelVector pixels) {
    const PixelVector alphaMask = hn::Set(Pixels(), 0xFF000000);
    const PixelVector colours = hn::Or(pixels, alphaMask);
    return whole(scaled(halves(colours), twice(hn::ShiftRight<24>(pixels))));
}

HWY_INLINE Channels dividedByAlpha(const Channels& c) {
    const RealVector part = hn::Div(real(255), hn::Max(c.alpha, real(1)));
    const auto straight = [&](RealVector colour) { return hn::Min(hn::Mul(colour, part), real(255)); };
    return {straight(c.blue), straight(c.green), straight(c.red), c.alpha};
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
