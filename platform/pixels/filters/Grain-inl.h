// Private to platform/pixels: the grain of film, another one in each frame.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct GrainFilter {
    Told told;
    Picture<Beyond::Again> noise{told.pass.aside};
    float amount = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const RealVector away = plus(noise.smooth(told.aside(at)).green, -0.5f);
        const RealVector level = clamped(grey(c));
        // Film shows it most between black and white.
        const RealVector shown = plus(times(times(level, minus(real(1), level)), 2.8f), 0.3f);
        const RealVector added = times(times(away, shown), amount);
        return each(c, [&](RealVector x) { return plus(x, added); });
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
