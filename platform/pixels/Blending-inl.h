// Private to platform/pixels: how the pixels of a row meet the canvas.
// Included once for each instruction set.
#if defined(MULTISCENE_BLENDING) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_BLENDING
#undef MULTISCENE_BLENDING
#else
#define MULTISCENE_BLENDING
#endif

#include <cstring>

#include "platform/pixels/PixelVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

// What multiplies each of the four numbers of a pixel, but for alpha's.
HWY_INLINE PixelVector factor(BlendFactor kind, PixelVector front, PixelVector back) {
    const hn::Repartition<uint8_t, Pixels> bytes;
    switch (kind) {
        case BlendFactor::Zero:
            return hn::Zero(Pixels());
        case BlendFactor::One:
            return hn::Set(Pixels(), 0xFFFFFFFF);
        case BlendFactor::SrcColor:
            return front;
        case BlendFactor::OneMinusSrcColor:
            return hn::Not(front);
        case BlendFactor::SrcAlpha:
            return alphas(front);
        case BlendFactor::OneMinusSrcAlpha:
            return hn::Not(alphas(front));
        case BlendFactor::DstAlpha:
            return alphas(back);
        case BlendFactor::OneMinusDstAlpha:
            return hn::Not(alphas(back));
        case BlendFactor::DstColor:
            return back;
        case BlendFactor::OneMinusDstColor:
            return hn::Not(back);
        case BlendFactor::SrcAlphaSaturate:
            return hn::BitCast(Pixels(), hn::Min(hn::BitCast(bytes, alphas(front)),
                                                 hn::BitCast(bytes, hn::Not(alphas(back)))));
    }
    return hn::Zero(Pixels());
}

// (a * b + c * d) / 255, rounded once, at most 255.
HWY_INLINE WordVector sumOfProducts(WordVector a, WordVector b, WordVector c, WordVector d) {
    const WordVector sum = hn::Min(hn::SaturatedAdd(hn::Mul(a, b), hn::Mul(c, d)), hn::Set(Words(), 65025));
    const WordVector product = hn::Add(sum, hn::Set(Words(), 128));
    return hn::ShiftRight<8>(hn::Add(product, hn::ShiftRight<8>(product)));
}

// Any blend function.
struct ByFactors {
    BlendFunction function;

    HWY_INLINE PixelVector operator()(PixelVector front, PixelVector back) const {
        const PixelVector alphaMask = hn::Set(Pixels(), 0xFF000000);
        const Halves fronts = halves(front), backs = halves(back);
        const Halves a = halves(hn::Or(factor(function.source, front, back), alphaMask));
        const PixelVector kept = factor(function.destination, front, back);
        const Halves b = halves(hn::Or(hn::And(alphaMask, hn::Not(front)), hn::AndNot(alphaMask, kept)));
        return whole({sumOfProducts(fronts.even, a.even, backs.even, b.even),
                      sumOfProducts(fronts.odd, a.odd, backs.odd, b.odd)});
    }
};

// The two that nearly everything is painted with, the same numbers in fewer steps.
struct Over {
    HWY_INLINE PixelVector operator()(PixelVector front, PixelVector back) const {
        const PixelVector alpha = hn::ShiftRight<24>(front);
        const WordVector rest = twice(hn::Sub(hn::Set(Pixels(), 255), alpha));
        const Halves kept = scaled(halves(back), rest), added = halves(front);
        // Alpha-multiplied colours stay below 256 here; others are cut off.
        const hn::Repartition<uint8_t, Pixels> bytes;
        return hn::BitCast(
            Pixels(), hn::SaturatedAdd(hn::BitCast(bytes, whole(kept)), hn::BitCast(bytes, whole(added))));
    }
};

// The colours are added; alpha is laid over, so that glowing light does not make a hole opaque.
struct Added {
    HWY_INLINE PixelVector operator()(PixelVector front, PixelVector back) const {
        const PixelVector alphaMask = hn::Set(Pixels(), 0xFF000000);
        const hn::Repartition<uint8_t, Pixels> bytes;
        const PixelVector sum =
            hn::BitCast(Pixels(), hn::SaturatedAdd(hn::BitCast(bytes, front), hn::BitCast(bytes, back)));
        return hn::Or(hn::AndNot(alphaMask, sum), hn::And(alphaMask, Over()(front, back)));
    }
};

// How much of a pixel lies on the inner side of an edge, 0 to 1.
HWY_INLINE RealVector coverage(const PaintEdge& edge, RealVector x, int row) {
    const RealVector zero = hn::Zero(Reals()), one = real(1);
    const float rest = edge.y * static_cast<float>(row) + edge.away;
    const RealVector distance = hn::Add(hn::Mul(real(edge.x), x), real(rest));
    if (edge.smooth) return bounded(hn::Add(distance, real(0.5f)), 0, 1);
    const auto isInside = edge.hasLine() ? hn::Ge(distance, zero) : hn::Gt(distance, zero);
    return hn::IfThenElse(isInside, one, zero);
}

// Of the pixels of a run that an edge may cross, 0 to 255.
HWY_INLINE void findCoverage(const PreparedPaint& paint, const Lookup& lookup, uint32_t* levels) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    for (int i = 0; i < lookup.count; i += lanes) {
        const RealVector x = columns(lookup.column + i);
        RealVector level = real(255);
        for (const auto& [first, second] : paint.edgePairs) {
            const RealVector both = hn::Add(coverage(first, x, lookup.row), coverage(second, x, lookup.row));
            level = hn::Mul(level, hn::Max(hn::Sub(both, real(1)), real(0)));
        }
        hn::StoreU(rounded(level), Pixels(), levels + i);
    }
}

// As far as a pixel is covered it shows what was blended, else what was there.
template <class Blend>
struct Covered {
    Blend blend;
    const uint32_t* coverage;

    HWY_INLINE PixelVector operator()(PixelVector front, PixelVector back, int i) const {
        const PixelVector blended = blend(front, back);
        if (!coverage) return blended;
        const PixelVector level = hn::LoadU(Pixels(), coverage + i);
        const WordVector part = twice(level), rest = twice(hn::Sub(hn::Set(Pixels(), 255), level));
        const Halves a = halves(back), b = halves(blended);
        return whole({sumOfProducts(a.even, rest, b.even, part), sumOfProducts(a.odd, rest, b.odd, part)});
    }
};

template <class Blend>
HWY_INLINE void meet(const Blend& blend, const uint32_t* front, const uint32_t* coverage, int count,
                     uint32_t* canvas) {
    const Covered<Blend> meeting{blend, coverage};
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    int i = 0;
    for (; i + lanes <= count; i += lanes) {
        const PixelVector back = hn::LoadU(Pixels(), canvas + i);
        hn::StoreU(meeting(hn::LoadU(Pixels(), front + i), back, i), Pixels(), canvas + i);
    }
    if (i == count) return;
    // Pixels beside the run belong to other tiles, and may not be there at all.
    HWY_ALIGN uint32_t frontRest[HWY_MAX_BYTES / 4] = {}, rest[HWY_MAX_BYTES / 4] = {};
    const auto bytes = static_cast<size_t>(count - i) * 4;
    std::memcpy(frontRest, front + i, bytes);
    std::memcpy(rest, canvas + i, bytes);
    hn::Store(meeting(hn::Load(Pixels(), frontRest), hn::Load(Pixels(), rest), i), Pixels(), rest);
    std::memcpy(canvas + i, rest, bytes);
}

// `coverage` 0 to 255 of each pixel, or null: all are covered.
HWY_INLINE void meet(const BlendFunction& function, const uint32_t* front, const uint32_t* coverage,
                     int count, uint32_t* canvas) {
    if (function == BlendFunction{BlendFactor::One, BlendFactor::OneMinusSrcAlpha})
        meet(Over(), front, coverage, count, canvas);
    else if (function == BlendFunction{BlendFactor::One, BlendFactor::One})
        meet(Added(), front, coverage, count, canvas);
    else
        meet(ByFactors{function}, front, coverage, count, canvas);
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
