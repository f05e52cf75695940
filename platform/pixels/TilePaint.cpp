#include "platform/pixels/TilePaint.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/TilePaint.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include <hwy/highway.h>

// What does not depend on the instruction set is compiled in the first of these passes only.
#ifndef MULTISCENE_TILE_PAINT
#define MULTISCENE_TILE_PAINT
namespace platform {

// A run of pixels in one row; `to` lies beyond it.
struct Run {
    int from, to;
    bool isEmpty() const { return from >= to; }
};

// Where a line bounds a row: `inside` pixels are certainly covered wholly by it, `touched` ones perhaps. What
// lies between is asked pixel by pixel, so a little more than need be does not show.
struct RowBounds {
    Run touched, inside;
};

inline void boundBy(const PaintEdge& edge, int row, RowBounds& bounds) {
    constexpr double kSlack = 1.0 / 64;
    const double rest = static_cast<double>(edge.y) * row + edge.away;
    const double outer = (edge.smooth ? -0.5 : 0) - kSlack, inner = (edge.smooth ? 0.5 : 0) + kSlack;
    if (std::abs(edge.x) < 1e-6) {
        if (rest < outer) bounds.touched.to = bounds.touched.from;
        if (rest < inner) bounds.inside.to = bounds.inside.from;
        return;
    }
    const auto column = [&](double distance) { return std::clamp((distance - rest) / edge.x, -1e6, 1e6); };
    const auto first = [](double place) { return static_cast<int>(std::ceil(place)); };
    const auto beyond = [](double place) { return static_cast<int>(std::floor(place)) + 1; };
    if (edge.x > 0) {
        bounds.touched.from = std::max(bounds.touched.from, first(column(outer)));
        bounds.inside.from = std::max(bounds.inside.from, first(column(inner)));
    } else {
        bounds.touched.to = std::min(bounds.touched.to, beyond(column(outer)));
        bounds.inside.to = std::min(bounds.inside.to, beyond(column(inner)));
    }
}

inline RowBounds rowBounds(const PreparedPaint& paint, int row, Run within) {
    RowBounds bounds{within, within};
    for (const auto& pair : paint.edgePairs)
        for (const PaintEdge& edge : pair) boundBy(edge, row, bounds);
    if (bounds.inside.isEmpty()) bounds.inside = {bounds.touched.to, bounds.touched.to};
    return bounds;
}

// Places in a picture in 1/65536 of a texel, measured from the middle of its first one.
inline int32_t fixedPoint(double texels) {
    constexpr double kFarthest = 32000;
    return static_cast<int32_t>(std::lrint(std::clamp(texels, -kFarthest, kFarthest) * 65536));
}

}  // namespace platform
#endif

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

// A row of a tile, with room for a vector that reaches beyond.
struct RowBuffer {
    HWY_ALIGN uint32_t pixels[kTileColumns + HWY_MAX_BYTES / 4];
};

HWY_INLINE RealVector columns(int first) {
    return hn::Add(hn::Set(Reals(), static_cast<float>(first)), hn::Iota(Reals(), 0.0f));
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

// What lies at fixed-point places of a picture, between its four nearest texels.
class Sampler {
  public:
    Sampler(const Surface& picture, Wrap wrap)
        : texels_(reinterpret_cast<const uint32_t*>(picture.pixels)),
          stride_(static_cast<int32_t>(picture.stride / 4)),
          width_(picture.width),
          height_(picture.height),
          wrap_(wrap) {}

    /// Whether all four texels lie in the picture.
    bool isInside(int64_t u, int64_t v) const {
        const int64_t column = u >> 16, row = v >> 16;
        return column >= 0 && row >= 0 && column < width_ - 1 && row < height_ - 1;
    }

    HWY_INLINE PixelVector atInside(PlaceVector u, PlaceVector v) const {
        const PlaceVector column = hn::ShiftRight<16>(u), row = hn::ShiftRight<16>(v);
        const PlaceVector upper = hn::Add(hn::Mul(row, hn::Set(Places(), stride_)), column);
        return betweenNeighbours(upper, fraction(u), fraction(v));
    }

    HWY_INLINE PixelVector at(PlaceVector u, PlaceVector v) const {
        const PlaceVector one = hn::Set(Places(), 1), stride = hn::Set(Places(), stride_);
        const PlaceVector column = hn::ShiftRight<16>(u), row = hn::ShiftRight<16>(v);
        const PlaceVector left = wrapped(column, width_), right = wrapped(hn::Add(column, one), width_);
        const PlaceVector upper = hn::Mul(wrapped(row, height_), stride);
        const PlaceVector lower = hn::Mul(wrapped(hn::Add(row, one), height_), stride);
        const WordVector down = fraction(v);
        const Halves before = mixed(texel(hn::Add(upper, left)), texel(hn::Add(lower, left)), down);
        const Halves after = mixed(texel(hn::Add(upper, right)), texel(hn::Add(lower, right)), down);
        return whole(mixed(before, after, fraction(u)));
    }

  private:
    HWY_INLINE Halves texel(PlaceVector index) const {
        return halves(hn::GatherIndex(Pixels(), texels_, index));
    }

#if HWY_TARGET <= HWY_AVX2
    // Two neighbours of a row are fetched at once: gathering costs by the piece.
    HWY_INLINE PixelVector betweenNeighbours(PlaceVector upper, WordVector across, WordVector down) const {
        const hn::Half<Places> half;
        const PixelVector downs = hn::BitCast(Pixels(), down);
        const Halves first = pairs(hn::LowerHalf(half, upper), hn::LowerHalf(hn::Half<Pixels>(), downs));
        const Halves second = pairs(hn::UpperHalf(half, upper), hn::UpperHalf(hn::Half<Pixels>(), downs));
        return whole(mixed(beside<0>(first, second), beside<1>(first, second), across));
    }

    using Pairs = hn::Repartition<uint64_t, Pixels>;

    HWY_INLINE Halves pairs(hn::Vec<hn::Half<Places>> upper, hn::Vec<hn::Half<Pixels>> down) const {
        const auto bytes = hn::ShiftLeft<2>(hn::PromoteTo(hn::RebindToSigned<Pairs>(), upper));
        const auto below = hn::Add(bytes, hn::Set(hn::RebindToSigned<Pairs>(), int64_t{stride_} * 4));
        const auto* texels = reinterpret_cast<const uint64_t*>(texels_);
        const auto part = hn::PromoteTo(Pairs(), down);
        return mixed(halves(hn::BitCast(Pixels(), hn::GatherOffset(Pairs(), texels, bytes))),
                     halves(hn::BitCast(Pixels(), hn::GatherOffset(Pairs(), texels, below))),
                     hn::BitCast(Words(), hn::Or(part, hn::ShiftLeft<32>(part))));
    }

    // The left (0) or right (1) ones of pairs.
    template <int kSide>
    static HWY_INLINE WordVector beside(WordVector first, WordVector second) {
        const PixelVector a = hn::BitCast(Pixels(), first), b = hn::BitCast(Pixels(), second);
        return hn::BitCast(Words(), kSide ? hn::ConcatOdd(Pixels(), b, a) : hn::ConcatEven(Pixels(), b, a));
    }
    template <int kSide>
    static HWY_INLINE Halves beside(const Halves& first, const Halves& second) {
        return {beside<kSide>(first.even, second.even), beside<kSide>(first.odd, second.odd)};
    }
#else
    HWY_INLINE PixelVector betweenNeighbours(PlaceVector upper, WordVector across, WordVector down) const {
        const PlaceVector one = hn::Set(Places(), 1);
        const PlaceVector lower = hn::Add(upper, hn::Set(Places(), stride_));
        const Halves before = mixed(texel(upper), texel(lower), down);
        const Halves after = mixed(texel(hn::Add(upper, one)), texel(hn::Add(lower, one)), down);
        return whole(mixed(before, after, across));
    }
#endif

    static HWY_INLINE WordVector fraction(PlaceVector place) {
        const PixelVector part = hn::ShiftRight<8>(hn::BitCast(Pixels(), place));
        return twice(hn::And(part, hn::Set(Pixels(), 0xFF)));
    }

    HWY_INLINE PlaceVector wrapped(PlaceVector place, int32_t size) const {
        if (wrap_ == Wrap::Clamp)
            return hn::Min(hn::Max(place, hn::Zero(Places())), hn::Set(Places(), size - 1));
        // Exact: places and sizes are below 32768, so a quotient is never rounded up to the next whole
        // number.
        const RealVector real = hn::ConvertTo(Reals(), place),
                         period = hn::Set(Reals(), static_cast<float>(size));
        const RealVector turns = hn::Floor(hn::Div(real, period));
        return hn::ConvertTo(Places(), hn::Sub(real, hn::Mul(turns, period)));
    }

    const uint32_t* texels_;
    int32_t stride_, width_, height_;
    Wrap wrap_;
};

struct Place {
    double u, v;
};

Place placeAt(const PreparedPaint& paint, int column, int row) {
    const auto& m = paint.toTexel;
    double u = m[0] * column + m[1] * row + m[2] - 0.5, v = m[3] * column + m[4] * row + m[5] - 0.5;
    if (paint.wrap == Wrap::Repeat) {
        u -= paint.picture.width * std::floor(u / paint.picture.width);
        v -= paint.picture.height * std::floor(v / paint.picture.height);
    }
    return {u, v};
}

template <bool kInside>
void sampleStraightRun(const Sampler& sampler, int32_t u, int32_t v, int32_t uStep, int32_t vStep, int count,
                       uint32_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const PlaceVector lane = hn::Iota(Places(), 0);
    PlaceVector us = hn::Add(hn::Set(Places(), u), hn::Mul(lane, hn::Set(Places(), uStep)));
    PlaceVector vs = hn::Add(hn::Set(Places(), v), hn::Mul(lane, hn::Set(Places(), vStep)));
    const PlaceVector uNext = hn::Set(Places(), uStep * lanes), vNext = hn::Set(Places(), vStep * lanes);
    for (int i = 0; i < count; i += lanes) {
        hn::StoreU(kInside ? sampler.atInside(us, vs) : sampler.at(us, vs), Pixels(), pixels + i);
        us = hn::Add(us, uNext);
        vs = hn::Add(vs, vNext);
    }
}

// Pixels to look up: `count` of a row from `column` on, their places counted from the tile's first column on,
// so that they do not depend on where a run begins.
struct Lookup {
    int origin, column, row, count;
};

void sampleStraight(const PreparedPaint& paint, const Sampler& sampler, const Lookup& lookup,
                    uint32_t* pixels) {
    constexpr double kSteepest = 256;
    const auto step = [&](double texels) { return fixedPoint(std::clamp(texels, -kSteepest, kSteepest)); };
    const Place place = placeAt(paint, lookup.origin, lookup.row);
    const int32_t uStep = step(paint.toTexel[0]), vStep = step(paint.toTexel[3]);
    const int64_t before = lookup.column - lookup.origin;
    const int64_t u = fixedPoint(place.u) + uStep * before, v = fixedPoint(place.v) + vStep * before;
    // Only at the picture's own edges texels have to be looked for.
    constexpr int kPiece = 64;
    for (int done = 0; done < lookup.count; done += kPiece) {
        const int count = std::min(kPiece, lookup.count - done);
        // Vectors reach beyond the run, and what they read must lie in the picture, too.
        const auto last =
            static_cast<int64_t>(hwy::RoundUpTo(static_cast<size_t>(count), hn::Lanes(Pixels()))) - 1;
        const int64_t uHere = u + uStep * int64_t{done}, vHere = v + vStep * int64_t{done};
        const bool inside =
            sampler.isInside(uHere, vHere) && sampler.isInside(uHere + uStep * last, vHere + vStep * last);
        const auto run = inside ? sampleStraightRun<true> : sampleStraightRun<false>;
        run(sampler, static_cast<int32_t>(uHere), static_cast<int32_t>(vHere), uStep, vStep, count,
            pixels + done);
    }
}

void sampleDeep(const PreparedPaint& paint, const Sampler& sampler, const Lookup& lookup, uint32_t* pixels) {
    const auto& m = paint.toTexel;
    // Within a tile single precision is ample.
    const auto real = [](double number) { return hn::Set(Reals(), static_cast<float>(number)); };
    const auto first = [&](size_t i) {
        return real(m[i] * lookup.origin + m[i + 1] * lookup.row + m[i + 2]);
    };
    const RealVector u0 = first(0), v0 = first(3), q0 = first(6);
    const RealVector uStep = real(m[0]), vStep = real(m[3]), qStep = real(m[6]);
    const RealVector half = real(0.5), scale = real(65536), farthest = real(32000);
    const auto fixed = [&](RealVector texels) {
        const RealVector bounded = hn::Min(hn::Max(hn::Sub(texels, half), hn::Neg(farthest)), farthest);
        return hn::ConvertTo(Places(), hn::Floor(hn::Mul(bounded, scale)));
    };
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    for (int i = 0; i < lookup.count; i += lanes) {
        const RealVector x = columns(lookup.column - lookup.origin + i);
        const RealVector q = hn::Add(q0, hn::Mul(qStep, x));
        const RealVector u = hn::Div(hn::Add(u0, hn::Mul(uStep, x)), q);
        const RealVector v = hn::Div(hn::Add(v0, hn::Mul(vStep, x)), q);
        hn::StoreU(sampler.at(fixed(u), fixed(v)), Pixels(), pixels + i);
    }
}

void sample(const PreparedPaint& paint, const Sampler& sampler, const Lookup& lookup, uint32_t* pixels) {
    if (paint.perspective)
        sampleDeep(paint, sampler, lookup, pixels);
    else
        sampleStraight(paint, sampler, lookup, pixels);
}

// How much of a pixel lies on the inner side of an edge, 0 to 1.
HWY_INLINE RealVector coverage(const PaintEdge& edge, RealVector x, int row) {
    const RealVector zero = hn::Zero(Reals()), one = hn::Set(Reals(), 1.0f);
    const float rest = edge.y * static_cast<float>(row) + edge.away;
    const RealVector distance = hn::Add(hn::Mul(hn::Set(Reals(), edge.x), x), hn::Set(Reals(), rest));
    if (!edge.smooth) return hn::IfThenElse(hn::Ge(distance, zero), one, zero);
    return hn::Min(hn::Max(hn::Add(distance, hn::Set(Reals(), 0.5f)), zero), one);
}

// Fades the pixels of a run that an edge may cross by coverage and opacity.
void fadeByCoverage(const PreparedPaint& paint, int column, int row, int count, uint32_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const RealVector zero = hn::Zero(Reals()), one = hn::Set(Reals(), 1.0f);
    for (int i = 0; i < count; i += lanes) {
        const RealVector x = columns(column + i);
        RealVector level = hn::Set(Reals(), static_cast<float>(paint.opacity));
        for (const auto& [first, second] : paint.edgePairs) {
            const RealVector both = hn::Add(coverage(first, x, row), coverage(second, x, row));
            level = hn::Mul(level, hn::Max(hn::Sub(both, one), zero));
        }
        const PlaceVector rounded = hn::ConvertTo(Places(), hn::Add(level, hn::Set(Reals(), 0.5f)));
        const Halves colours = halves(hn::LoadU(Pixels(), pixels + i));
        hn::StoreU(whole(scaled(colours, twice(hn::BitCast(Pixels(), rounded)))), Pixels(), pixels + i);
    }
}

void fade(int opacity, int count, uint32_t* pixels) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const WordVector level = hn::Set(Words(), static_cast<uint16_t>(opacity));
    for (int i = 0; i < count; i += lanes)
        hn::StoreU(whole(scaled(halves(hn::LoadU(Pixels(), pixels + i)), level)), Pixels(), pixels + i);
}

HWY_INLINE PixelVector over(PixelVector front, PixelVector back) {
    const PixelVector alpha = hn::ShiftRight<24>(front);
    const WordVector rest = twice(hn::Sub(hn::Set(Pixels(), 255), alpha));
    const Halves kept = scaled(halves(back), rest), added = halves(front);
    // Alpha-multiplied colours stay below 256 here; others are cut off.
    const hn::Repartition<uint8_t, Pixels> bytes;
    return hn::BitCast(Pixels(),
                       hn::SaturatedAdd(hn::BitCast(bytes, whole(kept)), hn::BitCast(bytes, whole(added))));
}

// The colours are added; alpha is laid over, so that glowing light does not make a hole opaque.
HWY_INLINE PixelVector added(PixelVector front, PixelVector back) {
    const PixelVector alphaMask = hn::Set(Pixels(), 0xFF000000);
    const hn::Repartition<uint8_t, Pixels> bytes;
    const PixelVector sum =
        hn::BitCast(Pixels(), hn::SaturatedAdd(hn::BitCast(bytes, front), hn::BitCast(bytes, back)));
    return hn::Or(hn::AndNot(alphaMask, sum), hn::And(alphaMask, over(front, back)));
}

HWY_INLINE PixelVector met(Meeting meeting, PixelVector front, PixelVector back) {
    return meeting == Meeting::Over ? over(front, back) : added(front, back);
}

void meet(Meeting meeting, const uint32_t* front, int count, uint32_t* canvas) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const PixelVector back = hn::LoadU(Pixels(), canvas + i);
        hn::StoreU(met(meeting, hn::LoadU(Pixels(), front + i), back), Pixels(), canvas + i);
    }
    if (i == count) return;
    // Pixels beside the run belong to other tiles, and may not be there at all.
    HWY_ALIGN uint32_t frontRest[HWY_MAX_BYTES / 4] = {}, rest[HWY_MAX_BYTES / 4] = {};
    const auto bytes = static_cast<size_t>(count - i) * 4;
    std::memcpy(frontRest, front + i, bytes);
    std::memcpy(rest, canvas + i, bytes);
    hn::Store(met(meeting, hn::Load(Pixels(), frontRest), hn::Load(Pixels(), rest)), Pixels(), rest);
    std::memcpy(canvas + i, rest, bytes);
}

// A row of a picture that is neither scaled nor turned and lies on whole pixels; null where it is not.
const uint32_t* copiedRow(const PreparedPaint& paint, int row, const Run& run) {
    const auto& m = paint.toTexel;
    if (paint.perspective || m[0] != 1 || m[1] != 0 || m[3] != 0 || m[4] != 1) return nullptr;
    const double left = m[2] - 0.5, upper = m[5] - 0.5 + row;
    if (left != std::floor(left) || upper != std::floor(upper)) return nullptr;
    if (run.from + left < 0 || run.to + left > paint.picture.width || upper < 0 ||
        upper >= paint.picture.height)
        return nullptr;
    const uint8_t* texels = paint.picture.pixels + static_cast<ptrdiff_t>(upper) * paint.picture.stride;
    return reinterpret_cast<const uint32_t*>(texels) + (run.from + static_cast<int>(left));
}

class RowPainter {
  public:
    RowPainter(const PreparedPaint& paint, int origin, const Canvas& canvas)
        : paint_(paint), canvas_(canvas), sampler_(paint.picture, paint.wrap), origin_(origin) {}

    void paint(int row, Run within) {
        const RowBounds bounds = rowBounds(paint_, row, within);
        paintEdge(row, {bounds.touched.from, std::min(bounds.inside.from, bounds.touched.to)});
        paintInside(row, bounds.inside);
        paintEdge(row, {std::max(bounds.inside.to, bounds.touched.from), bounds.touched.to});
    }

  private:
    uint32_t* canvasAt(int row, int column) const {
        return reinterpret_cast<uint32_t*>(canvas_.pixels + row * canvas_.stride) + column;
    }

    void paintEdge(int row, const Run& run) {
        if (run.isEmpty()) return;
        const int count = run.to - run.from;
        sample(paint_, sampler_, {origin_, run.from, row, count}, buffer_.pixels);
        fadeByCoverage(paint_, run.from, row, count, buffer_.pixels);
        meet(paint_.meeting, buffer_.pixels, count, canvasAt(row, run.from));
    }

    void paintInside(int row, const Run& run) {
        if (run.isEmpty()) return;
        const int count = run.to - run.from;
        uint32_t* canvas = canvasAt(row, run.from);
        const uint32_t* copied = paint_.opacity == 255 ? copiedRow(paint_, row, run) : nullptr;
        if (copied && paint_.hides()) {
            std::memcpy(canvas, copied, static_cast<size_t>(count) * 4);
            return;
        }
        if (!copied) {
            sample(paint_, sampler_, {origin_, run.from, row, count}, buffer_.pixels);
            copied = buffer_.pixels;
        }
        if (paint_.opacity < 255) fade(paint_.opacity, count, buffer_.pixels);
        if (paint_.hides())
            std::memcpy(canvas, buffer_.pixels, static_cast<size_t>(count) * 4);
        else
            meet(paint_.meeting, copied, count, canvas);
    }

    const PreparedPaint& paint_;
    const Canvas& canvas_;
    const Sampler sampler_;
    const int origin_;
    RowBuffer buffer_;
};

void paintRows(const PreparedPaint& paint, const TileArea& area, const Canvas& canvas) {
    RowPainter painter(paint, area.left, canvas);
    const Run within{std::max(area.left, paint.left), std::min(area.right, paint.right)};
    if (within.isEmpty()) return;
    const int bottom = std::min(area.bottom, paint.bottom);
    for (int row = std::max(area.top, paint.top); row < bottom; ++row) painter.paint(row, within);
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

HWY_EXPORT(paintRows);

void paintTile(const PreparedPaint& paint, const TileArea& area, const Canvas& canvas) {
    HWY_DYNAMIC_DISPATCH(paintRows)(paint, area, canvas);
}

bool covers(const PreparedPaint& paint, const TileArea& area) {
    // A convex shape that holds the first and the last row holds what lies between.
    for (const int row : {area.top, area.bottom - 1}) {
        const Run inside = rowBounds(paint, row, {area.left, area.right}).inside;
        if (inside.from > area.left || inside.to < area.right) return false;
    }
    return paint.top <= area.top && paint.bottom >= area.bottom;
}

}  // namespace platform
#endif
