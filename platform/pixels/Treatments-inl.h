// Private to platform/pixels: what is done to the pixels of a row between the picture and the canvas.
// Included once for each instruction set.
#if defined(MULTISCENE_TREATMENTS) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_TREATMENTS
#undef MULTISCENE_TREATMENTS
#else
#define MULTISCENE_TREATMENTS
#endif

#include <algorithm>
#include <cmath>

#include "platform/pixels/Sampling-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

HWY_INLINE RealVector between(RealVector a, RealVector b, RealVector part) {
    return hn::Add(a, hn::Mul(hn::Sub(b, a), part));
}

// sin(2 pi x) to 0.0002.
HWY_INLINE RealVector sineOfTurns(RealVector x) {
    // From -1/2 to 1/2, then folded to a quarter.
    const RealVector turn = hn::Sub(x, hn::Floor(hn::Add(x, real(0.5f))));
    const RealVector size = hn::Abs(turn), folded = hn::Min(size, hn::Sub(real(0.5f), size));
    const RealVector angle = hn::Mul(hn::CopySign(folded, turn), real(6.2831853f));
    const RealVector square = hn::Mul(angle, angle);
    RealVector sum = hn::Add(hn::Mul(square, real(-1.0f / 5040)), real(1.0f / 120));
    sum = hn::Add(hn::Mul(square, sum), real(-1.0f / 6));
    return hn::Mul(angle, hn::Add(hn::Mul(square, sum), real(1)));
}

// --- Filters move what is looked up, and change its colour.

HWY_INLINE bool movesPlaces(const FilterPaint& filter) {
    return filter.reflection || filter.type == 4 || filter.type == 5;
}

// The middle of a mosaic's tile, as far as the filter shows.
HWY_INLINE RealVector towardsTile(RealVector texel, float tile, float range) {
    const RealVector middle = hn::Mul(hn::Add(hn::Floor(hn::Div(texel, real(tile))), real(0.5f)), real(tile));
    return between(texel, middle, real(range));
}

HWY_INLINE void sampleFiltered(const PreparedPaint& paint, const Lookup& lookup, uint32_t* pixels) {
    constexpr float kWaves = 3, kWaveHeight = 0.05f;  // from top to bottom; of the picture's width
    const FilterPaint& filter = *paint.filter;
    const Surface& picture = paint.picture.surface;
    const Slope down = slope(paint.toPlace, 1, lookup);
    const auto width = static_cast<float>(picture.width), height = static_cast<float>(picture.height);
    const double side = std::max(filter.pixelSize, 1.0f);
    const auto tileWidth = static_cast<float>(side / filter.pictureWidth * picture.width);
    const auto tileHeight = static_cast<float>(side / filter.pictureHeight * picture.height);
    const float swing = filter.range * kWaveHeight * width;
    const auto move = [&](RealVector x, RealVector near, RealVector& u, RealVector& v) {
        const RealVector place = hn::Mul(down.at(x), near);
        if (filter.reflection) v = hn::IfThenElse(hn::Gt(place, real(0.5f)), hn::Sub(real(height), v), v);
        if (filter.type == 4) {
            u = towardsTile(u, tileWidth, filter.range);
            v = towardsTile(v, tileHeight, filter.range);
        }
        if (filter.type == 5) {
            const RealVector turns = hn::Sub(hn::Mul(place, real(kWaves)), real(filter.time));
            u = hn::Add(u, hn::Mul(sineOfTurns(turns), real(swing)));
        }
    };
    sampleMoved(paint.picture, paint.perspective, lookup, move, pixels);
}

HWY_INLINE void filterColour(const FilterPaint& filter, Channels& c) {
    const RealVector most = real(255), range = real(filter.range);
    const auto change = [&](RealVector blue, RealVector green, RealVector red) {
        c.blue = between(c.blue, blue, range);
        c.green = between(c.green, green, range);
        c.red = between(c.red, red, range);
    };
    const RealVector grey = brightness(c);
    if (filter.type == 1) change(grey, grey, grey);
    if (filter.type == 2)
        change(hn::Min(hn::Mul(grey, real(0.8f)), most), hn::Min(grey, most),
               hn::Min(hn::Mul(grey, real(1.2f)), most));
    if (filter.type == 3) change(hn::Sub(most, c.blue), hn::Sub(most, c.green), hn::Sub(most, c.red));
    const auto& colour = filter.pictureColor;
    c = {hn::Mul(c.blue, real(colour[2])), hn::Mul(c.green, real(colour[1])), hn::Mul(c.red, real(colour[0])),
         hn::Mul(c.alpha, real(colour[3]))};
}

// Where a quad's border lies.
class Border {
  public:
    Border(const PreparedPaint& paint, const Lookup& lookup)
        : across_(slope(paint.toPlace, 0, lookup)),
          down_(slope(paint.toPlace, 1, lookup)),
          depth_(paint.toPlace, paint.perspective, lookup),
          colour_(paint.filter->borderColor) {
        const FilterPaint& filter = *paint.filter;
        const double shorter = std::min(filter.pictureWidth, filter.pictureHeight);
        acrossWidth_ = static_cast<float>(filter.borderWidth * shorter / filter.pictureWidth);
        downWidth_ = static_cast<float>(filter.borderWidth * shorter / filter.pictureHeight);
    }

    HWY_INLINE void draw(RealVector x, Channels& c) const {
        const RealVector near = depth_.at(x);
        const auto isNear = [&](const Slope& slope, float width) {
            const RealVector place = hn::Mul(slope.at(x), near);
            return hn::Lt(hn::Min(place, hn::Sub(real(1), place)), real(width));
        };
        const auto isBorder = hn::Or(isNear(across_, acrossWidth_), isNear(down_, downWidth_));
        const auto drawn = [&](size_t i, RealVector inner) {
            return hn::IfThenElse(isBorder, real(colour_[i] * 255), inner);
        };
        c = {drawn(2, c.blue), drawn(1, c.green), drawn(0, c.red), drawn(3, c.alpha)};
    }

  private:
    Slope across_, down_;
    Depth depth_;
    std::array<float, 4> colour_;
    float acrossWidth_, downWidth_;
};

// --- Keys. Every pixel is taken as a mixture of the key colour and something in front of it.

class KeyShare {
  public:
    explicit KeyShare(const std::array<float, 4>& colour) : colour_(colour) {
        const std::array<float, 3> key = differences(colour[0], colour[1], colour[2]);
        const float saturation = std::max(std::max(std::abs(key[0]), std::abs(key[1])), std::abs(key[2]));
        isGrey_ = saturation < 0.04f;
        float counted = 0;
        for (size_t i = 0; i < 3; ++i) {
            // Channels that are nearly alike in the key tell nothing.
            const bool counts = !isGrey_ && std::abs(key[i]) >= 0.5f * saturation;
            scale_[i] = counts ? 1 / (255 * key[i]) : 0;
            spare_[i] = counts ? 0.0f : 1.0f;
            counted += counts ? 1.0f : 0.0f;
        }
        meanPart_ = isGrey_ ? 0 : 1 / counted;
    }

    // `cut` by which a pixel is hidden, `freed` by which its colour is freed of the key's.
    struct Shares {
        RealVector cut, freed;
    };

    HWY_INLINE Shares of(const Channels& c) const {
        if (isGrey_) {
            const RealVector share = bounded(hn::Sub(real(1), distance(c)), 0, 1);
            return {share, share};
        }
        const RealVector a = hn::Mul(hn::Sub(c.red, c.green), real(scale_[0]));
        const RealVector b = hn::Mul(hn::Sub(c.green, c.blue), real(scale_[1]));
        const RealVector d = hn::Mul(hn::Sub(c.blue, c.red), real(scale_[2]));
        const RealVector mean = hn::Mul(hn::Add(hn::Add(a, b), d), real(meanPart_));
        const RealVector least = hn::Min(hn::Min(hn::Add(a, real(spare_[0])), hn::Add(b, real(spare_[1]))),
                                         hn::Add(d, real(spare_[2])));
        const RealVector sure = hn::Mul(hn::Max(least, real(0)), real(2));
        const RealVector freed = hn::Min(hn::Add(between(least, mean, real(0.3f)), sure), mean);
        return {bounded(least, 0, 1), bounded(freed, 0, 1)};
    }

  private:
    static std::array<float, 3> differences(float red, float green, float blue) {
        return {red - green, green - blue, blue - red};
    }

    HWY_INLINE RealVector distance(const Channels& c) const {
        const auto square = [&](RealVector colour, float key) {
            const RealVector far = hn::Sub(hn::Mul(colour, real(1.0f / 255)), real(key));
            return hn::Mul(far, far);
        };
        return hn::Sqrt(hn::Add(hn::Add(square(c.red, colour_[0]), square(c.green, colour_[1])),
                                square(c.blue, colour_[2])));
    }

    std::array<float, 4> colour_;
    std::array<float, 3> scale_{}, spare_{};
    float meanPart_ = 0;
    bool isGrey_ = false;
};

constexpr float kFullShare = 0.75f;  // from this share on a pixel is all backdrop

// What lies in front of the key colour, and how much of it there is, 0 to 1.
HWY_INLINE RealVector takeKeyOut(const KeyPaint& key, const KeyShare& keyShare, Channels& c) {
    const auto [cut, freed] = keyShare.of(c);
    const RealVector scale = hn::Div(real(1), hn::Max(hn::Sub(real(1), freed), real(1 - kFullShare)));
    const auto front = [&](RealVector colour, float keyed) {
        return bounded(hn::Mul(hn::Sub(colour, hn::Mul(freed, real(keyed * 255))), scale), 0, 255);
    };
    c = {front(c.blue, key.color[2]), front(c.green, key.color[1]), front(c.red, key.color[0]), c.alpha};
    const float edge = std::min(std::max(key.softEdge, 0.001f), kFullShare);
    return bounded(hn::Mul(hn::Sub(real(kFullShare), cut), real(1 / edge)), 0, 1);
}

// --- All that changes colours, in place.

HWY_INLINE Channels straight(PixelVector pixels, bool premultiplied) {
    const Channels c = channels(pixels);
    return premultiplied ? dividedByAlpha(c) : c;
}

HWY_INLINE PixelVector asPainted(const Channels& c, bool premultiplied) {
    const PixelVector pixels = packed(c);
    return premultiplied ? multipliedByAlpha(pixels) : pixels;
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
        const bool hasBorder = paint.filter->borderWidth > 0;
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
        const RealVector faded = hn::Mul(hn::LoadU(Reals(), opacities + i), between(from, to, progress));
        hn::StoreU(faded, Reals(), opacities + i);
    }
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
