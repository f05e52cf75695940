// Private to platform/pixels: what the filters' loops are made of. Numbers of colours go from 0 to 1, places
// are in pixels, the middle of the first one at (0.5, 0.5). The shaders of resources/shaders/filters do the
// same in the same order (filter.glsl), so that both painters agree.
#if defined(MULTISCENE_FILTERPIXEL) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_FILTERPIXEL
#undef MULTISCENE_FILTERPIXEL
#else
#define MULTISCENE_FILTERPIXEL
#endif

#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/pixels/PictureFilter.h"
#include "platform/pixels/PixelVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct Colour {
    RealVector red, green, blue, alpha;
};

struct At {
    RealVector x, y;
};

// --- arithmetic ----------------------------------------------------------------------------------------

HWY_INLINE RealVector plus(RealVector a, RealVector b) { return hn::Add(a, b); }
HWY_INLINE RealVector minus(RealVector a, RealVector b) { return hn::Sub(a, b); }
HWY_INLINE RealVector times(RealVector a, RealVector b) { return hn::Mul(a, b); }
HWY_INLINE RealVector times(RealVector a, float b) { return hn::Mul(a, real(b)); }
HWY_INLINE RealVector plus(RealVector a, float b) { return hn::Add(a, real(b)); }
HWY_INLINE RealVector clamped(RealVector a) { return bounded(a, 0, 1); }

// 0 before `from`, 1 beyond `from` + `length`, gently between.
HWY_INLINE RealVector soft(RealVector at, float from, float length) {
    const RealVector t = clamped(hn::Div(plus(at, -from), real(std::max(length, 0.0001f))));
    return times(times(t, t), minus(real(3), plus(t, t)));
}

HWY_INLINE RealVector cosineOfTurns(RealVector x) { return sineOfTurns(plus(x, 0.25f)); }

// --- colours -------------------------------------------------------------------------------------------

HWY_INLINE Colour colourOf(const std::array<float, 4>& c) {
    return {real(c[0]), real(c[1]), real(c[2]), real(c[3])};
}
HWY_INLINE RealVector grey(const Colour& c) {
    return plus(plus(times(c.red, 0.299f), times(c.green, 0.587f)), times(c.blue, 0.114f));
}
// Each of red, green and blue by itself; alpha stays.
template <class Change>
HWY_INLINE Colour each(const Colour& c, const Change& change) {
    return {change(c.red), change(c.green), change(c.blue), c.alpha};
}
template <class Change>
HWY_INLINE Colour each(const Colour& a, const Colour& b, const Change& change) {
    return {change(a.red, b.red), change(a.green, b.green), change(a.blue, b.blue), a.alpha};
}
// The colours between two; alpha is the first one's.
HWY_INLINE Colour mixed(const Colour& a, const Colour& b, RealVector part) {
    return each(a, b, [&](RealVector x, RealVector y) { return between(x, y, part); });
}
HWY_INLINE Colour withAlpha(const Colour& c, RealVector alpha) { return {c.red, c.green, c.blue, alpha}; }
HWY_INLINE Colour multiplied(const Colour& c) {
    return each(c, [&](RealVector x) { return times(x, c.alpha); });
}
HWY_INLINE Colour straight(const Colour& c) {
    const RealVector alpha = hn::Max(c.alpha, real(1.0f / 255));
    return each(c, [&](RealVector x) { return hn::Min(hn::Div(x, alpha), real(1)); });
}

HWY_INLINE Colour unpacked(PixelVector pixels) {
    const Channels c = channels(pixels);
    return {times(c.red, 1.0f / 255), times(c.green, 1.0f / 255), times(c.blue, 1.0f / 255),
            times(c.alpha, 1.0f / 255)};
}
HWY_INLINE PixelVector packedOf(const Colour& c) {
    return packed({times(c.blue, 255), times(c.green, 255), times(c.red, 255), times(c.alpha, 255)});
}

// --- pictures ------------------------------------------------------------------------------------------

enum class Beyond { Edge, Again };  // what lies beside a picture: its edge drawn out, or itself

// Looks up colours as they are in memory.
template <Beyond beyond = Beyond::Edge>
class Picture {
  public:
    explicit Picture(const Surface& surface)
        : texels_(reinterpret_cast<const uint32_t*>(surface.pixels)),
          stride_(static_cast<int32_t>(surface.stride / 4)),
          width_(surface.width),
          height_(surface.height) {}

    // The pixel that a place lies in.
    HWY_INLINE Colour texel(const At& at) const { return unpacked(pixel(hn::Floor(at.x), hn::Floor(at.y))); }

    // What lies between the four nearest pixels.
    HWY_INLINE Colour smooth(const At& at) const {
        const RealVector x = plus(at.x, -0.5f), y = plus(at.y, -0.5f);
        const RealVector left = hn::Floor(x), upper = hn::Floor(y);
        const RealVector right = plus(left, 1), lower = plus(upper, 1);
        const RealVector across = minus(x, left), down = minus(y, upper);
        return whole(whole(unpacked(pixel(left, upper)), unpacked(pixel(right, upper)), across),
                     whole(unpacked(pixel(left, lower)), unpacked(pixel(right, lower)), across), down);
    }

  private:
    static HWY_INLINE Colour whole(const Colour& a, const Colour& b, RealVector part) {
        return withAlpha(mixed(a, b, part), between(a.alpha, b.alpha, part));
    }
    static HWY_INLINE RealVector inside(RealVector place, int32_t size) {
        const auto length = static_cast<float>(size);
        if constexpr (beyond == Beyond::Edge) return bounded(place, 0, length - 1);
        // Whole numbers; half a step keeps the quotient clear of the next one.
        const RealVector turns = hn::Floor(hn::Div(plus(place, 0.5f), real(length)));
        return minus(place, times(turns, length));
    }
    HWY_INLINE PixelVector pixel(RealVector x, RealVector y) const {
        const PlaceVector column = hn::ConvertTo(Places(), inside(x, width_));
        const PlaceVector row = hn::ConvertTo(Places(), inside(y, height_));
        const PlaceVector index = hn::Add(hn::Mul(row, hn::Set(Places(), stride_)), column);
        return hn::GatherIndex(Pixels(), texels_, index);
    }

    const uint32_t* texels_;
    int32_t stride_, width_, height_;
};

// --- loops ---------------------------------------------------------------------------------------------

// What every filter is told.
struct Told {
    const FilterPass& pass;
    float width, height, shorter;  // of the picture, pixels

    explicit Told(const FilterPass& given)
        : pass(given),
          width(static_cast<float>(given.picture.width)),
          height(static_cast<float>(given.picture.height)),
          shorter(std::min(width, height)) {}

    float number(size_t i) const { return pass.numbers[i]; }
    Colour colour(size_t i) const { return colourOf(pass.colors[i]); }
    // Where in the second picture a place of the first one lies.
    HWY_INLINE At aside(const At& at) const {
        return {plus(times(at.x, pass.asideScale), pass.asideShift[0]),
                plus(times(at.y, pass.asideScale), pass.asideShift[1])};
    }
};

struct RowOfPixels {
    static constexpr size_t kRoom = kLongestFilteredSide + HWY_MAX_BYTES / 4;
    HWY_ALIGN uint32_t at[kRoom];
};

// Calls change(place, pixels) for all pixels of a row and writes what it returns.
template <class Change>
HWY_INLINE void changeRow(const FilterPass& pass, int row, const Change& change) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const auto width = static_cast<size_t>(pass.picture.width);
    RowOfPixels pixels;
    std::memcpy(pixels.at, pass.picture.pixels + row * pass.picture.stride, width * 4);
    std::fill_n(pixels.at + width, lanes, 0u);  // vectors reach beyond
    At at{{}, real(static_cast<float>(row) + 0.5f)};
    for (int i = 0; i < pass.picture.width; i += lanes) {
        at.x = plus(columns(i), 0.5f);
        hn::StoreU(change(at, hn::LoadU(Pixels(), pixels.at + i)), Pixels(), pixels.at + i);
    }
    std::memcpy(pass.filtered.pixels + row * pass.filtered.stride, pixels.at, width * 4);
}

// A filter that makes a pixel's straight colour, and its alpha, into others: filter(colour, place).
template <class Filter>
void byColour(const FilterPass& pass, int row) {
    const Filter filter{Told(pass)};
    const RealVector strength = real(pass.strength);
    changeRow(pass, row, [&](const At& at, PixelVector pixels) {
        const Colour given = unpacked(pixels);
        const Colour changed = filter(straight(given), at);
        const Colour sent = multiplied(each(changed, [](RealVector x) { return clamped(x); }));
        const Colour shown =
            withAlpha(mixed(given, sent, strength), between(given.alpha, sent.alpha, strength));
        return packedOf(shown);
    });
}

// A filter that looks elsewhere in the picture, which is mirrored at its edges: filter(place).
template <class Filter>
void byPlace(const FilterPass& pass, int row) {
    const Told told(pass);
    const Filter filter{told};
    const Picture<> picture(pass.picture);
    const auto mirrored = [](RealVector place, float size) {
        return minus(real(size), hn::Abs(minus(real(size), hn::Abs(place))));
    };
    changeRow(pass, row, [&](const At& at, PixelVector) {
        const At moved = filter(at);
        return packedOf(picture.smooth({mirrored(moved.x, told.width), mirrored(moved.y, told.height)}));
    });
}

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();

#endif
