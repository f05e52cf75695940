// Private to platform/pixels: darker towards the corners.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct VignetteFilter {
    Told told;
    float start = told.number(0), softness = told.number(1);
    Colour shade = told.colour(0);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const RealVector x = plus(times(at.x, 2 / told.width), -1),
                         y = plus(times(at.y, 2 / told.height), -1);
        const RealVector away = hn::Sqrt(times(plus(times(x, x), times(y, y)), 0.5f));
        return mixed(c, shade, times(soft(away, start, softness), shade.alpha));
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
