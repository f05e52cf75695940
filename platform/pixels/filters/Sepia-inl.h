// Private to platform/pixels: brown as old prints are.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct SepiaFilter {
    Told told;

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        const RealVector level = grey(c);
        return {times(level, 1.2f), level, times(level, 0.8f), c.alpha};
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
