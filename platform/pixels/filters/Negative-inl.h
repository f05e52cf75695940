// Private to platform/pixels: every colour by its opposite.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct NegativeFilter {
    Told told;

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        return each(c, [](RealVector x) { return minus(real(1), x); });
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
