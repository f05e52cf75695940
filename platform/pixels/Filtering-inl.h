// Private to platform/pixels: filters, which move what is looked up in a picture and change its colour.
// Included once for each instruction set.
#if defined(MULTISCENE_FILTERING) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_FILTERING
#undef MULTISCENE_FILTERING
#else
#define MULTISCENE_FILTERING
#endif

#include <algorithm>
#include <cmath>

#include "platform/pixels/Sampling-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

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

// A quad's border and its round corners.
class Border {
  public:
    Border(const PreparedPaint& paint, const Lookup& lookup)
        : across_(slope(paint.toPlace, 0, lookup)),
          down_(slope(paint.toPlace, 1, lookup)),
          depth_(paint.toPlace, paint.perspective, lookup),
          filter_(*paint.filter) {
        const float shorter = std::min(filter_.frameWidth, filter_.frameHeight);
        radius_ = filter_.cornerRadius * shorter;
        width_ = filter_.borderWidth * shorter;
    }

    static bool isThere(const FilterPaint& filter) {
        return filter.borderWidth > 0 || filter.cornerRadius > 0;
    }

    HWY_INLINE void draw(RealVector x, Channels& c) const {
        const RealVector near = depth_.at(x);
        const RealVector across = fromMiddle(across_, near, x, filter_.frameWidth);
        const RealVector down = fromMiddle(down_, near, x, filter_.frameHeight);
        if (width_ > 0) layUnder(within(across, down, width_, std::max(radius_ - width_, 0.0f)), c);
        if (radius_ > 0) c.alpha = hn::Mul(c.alpha, roundedOff(across, down));
    }

  private:
    HWY_INLINE RealVector fromMiddle(const Slope& slope, RealVector near, RealVector x, float size) const {
        const RealVector place = hn::Mul(slope.at(x), near);
        return hn::Mul(hn::Abs(hn::Sub(place, real(0.5f))), real(size));
    }
    // How much of a pixel lies inside of a line at this distance.
    HWY_INLINE RealVector part(RealVector distance) const {
        return bounded(hn::Sub(real(0.5f), hn::Mul(distance, real(filter_.pixelsAUnit))), 0, 1);
    }
    // How much of a pixel lies in the quad less a margin, whose corners are round.
    HWY_INLINE RealVector within(RealVector across, RealVector down, float margin, float radius) const {
        const RealVector x = hn::Sub(across, real(0.5f * filter_.frameWidth - margin - radius));
        const RealVector y = hn::Sub(down, real(0.5f * filter_.frameHeight - margin - radius));
        const RealVector zero = real(0), right = hn::Max(x, zero), lower = hn::Max(y, zero);
        const RealVector away = hn::Sqrt(hn::Add(hn::Mul(right, right), hn::Mul(lower, lower)));
        return part(hn::Sub(hn::Add(away, hn::Min(hn::Max(x, y), zero)), real(radius)));
    }
    // Straight edges are smoothed elsewhere.
    HWY_INLINE RealVector roundedOff(RealVector across, RealVector down) const {
        const RealVector x = hn::Sub(across, real(0.5f * filter_.frameWidth - radius_));
        const RealVector y = hn::Sub(down, real(0.5f * filter_.frameHeight - radius_));
        const auto isCorner = hn::And(hn::Gt(x, real(0)), hn::Gt(y, real(0)));
        return hn::IfThenElse(isCorner, within(across, down, 0, radius_), real(1));
    }
    // The border shows as far as the picture does not.
    HWY_INLINE void layUnder(RealVector inner, Channels& c) const {
        const auto& colour = filter_.borderColor;
        const RealVector alpha = between(real(colour[3] * 255), c.alpha, inner);
        const RealVector share = hn::Div(hn::Mul(inner, c.alpha), hn::Max(alpha, real(0.001f)));
        c = {between(real(colour[2] * 255), c.blue, share), between(real(colour[1] * 255), c.green, share),
             between(real(colour[0] * 255), c.red, share), alpha};
    }

    Slope across_, down_;
    Depth depth_;
    const FilterPaint& filter_;
    float radius_, width_;
};

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
