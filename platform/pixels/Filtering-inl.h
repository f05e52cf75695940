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

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
