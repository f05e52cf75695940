// Private to platform/pixels: edges and fine lines stand out.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct SharpenFilter {
    Told told;
    Picture<> blurred{told.pass.aside};
    float amount = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const Colour around = straight(blurred.smooth(told.aside(at)));
        return each(c, around,
                    [&](RealVector x, RealVector y) { return plus(x, times(minus(x, y), amount)); });
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
