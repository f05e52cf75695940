// Private to platform/pixels: what is bright shines over its edges.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct GlowFilter {
    Told told;
    Picture<> blurred{told.pass.aside};
    float amount = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const Colour around = straight(blurred.smooth(told.aside(at)));
        const RealVector light = times(grey(around), amount);
        return each(c, around, [&](RealVector x, RealVector y) {
            return minus(real(1), times(minus(real(1), x), minus(real(1), times(y, light))));
        });
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
