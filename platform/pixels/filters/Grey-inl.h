// Private to platform/pixels: brightness alone.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct GreyFilter {
    Told told;

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        const RealVector level = grey(c);
        return {level, level, level, c.alpha};
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
