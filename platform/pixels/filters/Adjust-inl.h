// Private to platform/pixels: brightness, contrast, saturation.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct AdjustFilter {
    Told told;
    float brightness = 0.5f * told.number(0);
    float contrast = 1 + told.number(1) + std::max(told.number(1), 0.0f);
    float saturation = 1 + told.number(2) + std::max(told.number(2), 0.0f);

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        const Colour lit =
            each(c, [&](RealVector x) { return plus(times(plus(x, -0.5f), contrast), 0.5f + brightness); });
        const RealVector level = grey(lit);
        return each(lit, [&](RealVector x) { return between(level, x, real(saturation)); });
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
