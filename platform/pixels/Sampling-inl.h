// Private to platform/pixels: what a picture shows at the pixels of a row.
// Included once for each instruction set.
#if defined(MULTISCENE_SAMPLING) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_SAMPLING
#undef MULTISCENE_SAMPLING
#else
#define MULTISCENE_SAMPLING
#endif

#include <algorithm>
#include <cmath>

#include "platform/pixels/PixelVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

// Places in a picture in 1/65536 of a texel, measured from the middle of its first one.
HWY_INLINE int32_t fixedPoint(double texels) {
    constexpr double kFarthest = 32000;
    return static_cast<int32_t>(std::lrint(std::clamp(texels, -kFarthest, kFarthest) * 65536));
}

// What lies at fixed-point places of a picture, between its four nearest texels.
class Sampler {
  public:
    explicit Sampler(const PlacedPicture& picture)
        : texels_(reinterpret_cast<const uint32_t*>(picture.surface.pixels)),
          stride_(static_cast<int32_t>(picture.surface.stride / 4)),
          width_(picture.surface.width),
          height_(picture.surface.height),
          wrap_(picture.wrap) {}

    /// Whether all four texels lie in the picture.
    bool isInside(int64_t u, int64_t v) const {
        const int64_t column = u >> 16, row = v >> 16;
        return column >= 0 && row >= 0 && column < width_ - 1 && row < height_ - 1;
    }

    HWY_INLINE bool isInside(PlaceVector u, PlaceVector v) const {
        // Below 0 is far beyond the last one, too.
        const auto isWithin = [](PlaceVector place, int32_t size) {
            const PixelVector texel = hn::BitCast(Pixels(), hn::ShiftRight<16>(place));
            const PixelVector last = hn::Set(Pixels(), static_cast<uint32_t>(std::max(size - 2, 0)));
            return hn::Eq(hn::Min(texel, last), texel);
        };
        return width_ > 1 && height_ > 1 &&
               hn::AllTrue(Pixels(), hn::And(isWithin(u, width_), isWithin(v, height_)));
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

HWY_INLINE Place placeAt(const PlacedPicture& picture, int column, int row) {
    const auto& m = picture.toTexel;
    double u = m[0] * column + m[1] * row + m[2] - 0.5, v = m[3] * column + m[4] * row + m[5] - 0.5;
    if (picture.wrap == Wrap::Repeat) {
        u -= picture.surface.width * std::floor(u / picture.surface.width);
        v -= picture.surface.height * std::floor(v / picture.surface.height);
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

HWY_INLINE void sampleStraight(const PlacedPicture& picture, const Sampler& sampler, const Lookup& lookup,
                               uint32_t* pixels) {
    constexpr double kSteepest = 256;
    const auto step = [&](double texels) { return fixedPoint(std::clamp(texels, -kSteepest, kSteepest)); };
    const Place place = placeAt(picture, lookup.origin, lookup.row);
    const int32_t uStep = step(picture.toTexel[0]), vStep = step(picture.toTexel[3]);
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

HWY_INLINE PlaceVector fixedPoint(RealVector texels) {
    const RealVector near = bounded(hn::Sub(texels, real(0.5f)), -32000, 32000);
    return hn::ConvertTo(Places(), hn::Floor(hn::Mul(near, real(65536))));
}

// Division by q in each pixel. `move(column, depth, u, v)` may lead to another place in the picture, in
// texels.
template <class Move>
HWY_INLINE void sampleMoved(const PlacedPicture& picture, bool perspective, const Lookup& lookup,
                            const Move& move, uint32_t* pixels) {
    const Sampler sampler(picture);
    const auto along = [&](size_t line) { return slope(picture.toTexel, line, lookup); };
    const Slope us = along(0), vs = along(1);
    const Depth depth(picture.toTexel, perspective, lookup);
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    for (int i = 0; i < lookup.count; i += lanes) {
        const RealVector x = columns(lookup.column - lookup.origin + i);
        const RealVector near = depth.at(x);
        RealVector u = hn::Mul(us.at(x), near), v = hn::Mul(vs.at(x), near);
        move(x, near, u, v);
        hn::StoreU(sampler.at(fixedPoint(u), fixedPoint(v)), Pixels(), pixels + i);
    }
}

HWY_INLINE void sample(const PlacedPicture& picture, bool perspective, const Lookup& lookup,
                       uint32_t* pixels) {
    if (perspective)
        sampleMoved(
            picture, true, lookup, [](RealVector, RealVector, RealVector&, RealVector&) {}, pixels);
    else
        sampleStraight(picture, Sampler(picture), lookup, pixels);
}

// A row of a picture that is neither scaled nor turned and lies on whole pixels; null where it is not.
HWY_INLINE const uint32_t* copiedRow(const PlacedPicture& picture, bool perspective, const Lookup& lookup) {
    const auto& m = picture.toTexel;
    if (perspective || m[0] != 1 || m[1] != 0 || m[3] != 0 || m[4] != 1) return nullptr;
    const double left = m[2] - 0.5, upper = m[5] - 0.5 + lookup.row;
    if (left != std::floor(left) || upper != std::floor(upper)) return nullptr;
    if (lookup.column + left < 0 || lookup.column + lookup.count + left > picture.surface.width ||
        upper < 0 || upper >= picture.surface.height)
        return nullptr;
    const uint8_t* texels = picture.surface.pixels + static_cast<ptrdiff_t>(upper) * picture.surface.stride;
    return reinterpret_cast<const uint32_t*>(texels) + (lookup.column + static_cast<int>(left));
}

HWY_INLINE void copyOrSample(const PlacedPicture& picture, bool perspective, const Lookup& lookup,
                             uint32_t* pixels) {
    if (const uint32_t* copied = copiedRow(picture, perspective, lookup))
        std::copy_n(copied, lookup.count, pixels);
    else
        sample(picture, perspective, lookup, pixels);
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
