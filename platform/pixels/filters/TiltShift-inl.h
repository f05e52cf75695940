// Private to platform/pixels: sharp in a band alone, as small things are that are seen from near.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct TiltShiftFilter {
    Told told;
    Picture<> blurred{told.pass.aside};
    float place = told.number(1), band = told.number(2), softness = told.number(3);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const RealVector away = hn::Abs(plus(times(at.y, 1 / told.height), -place));
        const RealVector part = soft(away, 0.5f * band, softness);
        const Colour far = straight(blurred.smooth(told.aside(at)));
        return withAlpha(mixed(c, far, part), between(c.alpha, far.alpha, part));
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
