// Private to platform/pixels: what is done to the pixels of a row between the picture and the canvas.
// Included once for each instruction set.
#if defined(MULTISCENE_TREATMENTS) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_TREATMENTS
#undef MULTISCENE_TREATMENTS
#else
#define MULTISCENE_TREATMENTS
#endif

#include <cmath>

#include "platform/pixels/Filtering-inl.h"
#include "platform/pixels/Keying-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

// --- All that changes colours, in place.

HWY_INLINE Channels straight(PixelVector pixels, bool premultiplied) {
    const Channels c = channels(pixels);
    return premultiplied ? dividedByAlpha(c) : c;
}

HWY_INLINE bool isPremultiplied(const PreparedPaint& paint) {
    return paint.premultiplied && !paint.picture.surface.opaque;
}

// Keys, filters, and the form that the blend function wants. `opacities` are multiplied by what a key leaves.
HWY_INLINE void treatColours(const PreparedPaint& paint, const Lookup& lookup, uint32_t* pixels,
                             float* opacities) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const auto change = [&](const auto& changed) {
        for (int i = 0; i < lookup.count; i += lanes)
            hn::StoreU(changed(hn::LoadU(Pixels(), pixels + i), i), Pixels(), pixels + i);
    };
    const bool wanted = paint.paintsPremultiplied;
    bool given = isPremultiplied(paint);
    if (paint.key) {
        const KeyShare share(paint.key->color);
        change([&](PixelVector pixel, int i) {
            Channels c = straight(pixel, given);
            const RealVector left = takeKeyOut(*paint.key, share, c);
            hn::StoreU(hn::Mul(hn::LoadU(Reals(), opacities + i), left), Reals(), opacities + i);
            return packed(c);
        });
        given = false;
    }
    if (paint.filter) {
        const Border border(paint, lookup);
        const bool hasBorder = Border::isThere(*paint.filter);
        change([&](PixelVector pixel, int i) {
            Channels c = straight(pixel, given);
            filterColour(*paint.filter, c);
            if (hasBorder) border.draw(columns(lookup.column - lookup.origin + i), c);
            return packed(c);
        });
        given = false;
    }
    const bool isOpaque = paint.picture.surface.opaque && !paint.filter;
    if (given == wanted || isOpaque) return;
    if (wanted)
        change([](PixelVector pixel, int) { return multipliedByAlpha(pixel); });
    else
        change([](PixelVector pixel, int) { return packed(dividedByAlpha(channels(pixel))); });
}

// --- Opacities of single pixels, 0 to 255.

HWY_INLINE void takeMask(const PreparedPaint& paint, const Lookup& lookup, uint32_t* scratch,
                         float* opacities) {
    const PreparedMask& mask = *paint.mask;
    copyOrSample(mask.picture, paint.perspective, lookup, scratch);
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    for (int i = 0; i < lookup.count; i += lanes) {
        const Channels c = channels(hn::LoadU(Pixels(), scratch + i));
        RealVector shown = brightness(c);
        if (mask.timesAlpha) shown = hn::Mul(shown, hn::Mul(c.alpha, real(1.0f / 255)));
        hn::StoreU(shown, Reals(), opacities + i);
    }
}

HWY_INLINE void applyGradient(const PreparedPaint& paint, const Lookup& lookup, float* opacities) {
    const GradientPaint& gradient = *paint.gradient;
    const Slope along = slope(paint.toPlace, gradient.vertical ? 1 : 0, lookup);
    const Depth depth(paint.toPlace, paint.perspective, lookup);
    const double span = gradient.endPlace - gradient.startPlace;
    const bool isHard = std::abs(span) < 0.0001;
    const RealVector start = real(static_cast<float>(gradient.startPlace));
    const RealVector scale = real(isHard ? 0 : static_cast<float>(1 / span));
    const RealVector from = real(static_cast<float>(gradient.startOpacity));
    const RealVector to = real(static_cast<float>(gradient.endOpacity));
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    for (int i = 0; i < lookup.count; i += lanes) {
        const RealVector x = columns(lookup.column - lookup.origin + i);
        const RealVector beyond = hn::Sub(hn::Mul(along.at(x), depth.at(x)), start);
        RealVector progress = isHard ? hn::IfThenElse(hn::Lt(beyond, real(0)), real(0), real(1))
                                     : bounded(hn::Mul(beyond, scale), 0, 1);
        if (gradient.soft)
            progress = hn::Mul(hn::Mul(progress, progress), hn::Sub(real(3), hn::Add(progress, progress)));
        const RealVector opacity = bounded(between(from, to, progress), 0, 1);
        hn::StoreU(hn::Mul(hn::LoadU(Reals(), opacities + i), opacity), Reals(), opacities + i);
    }
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
