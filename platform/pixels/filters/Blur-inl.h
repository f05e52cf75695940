// Private to platform/pixels: everything out of focus.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct BlurFilter {
    Told told;
    Picture<> blurred{told.pass.aside};

    HWY_INLINE Colour operator()(const Colour&, const At& at) const {
        return straight(blurred.smooth(told.aside(at)));
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
