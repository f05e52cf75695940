// Private to platform/pixels: brightness from one colour to another.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct DuotoneFilter {
    Told told;

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        return withAlpha(mixed(told.colour(0), told.colour(1), grey(c)), c.alpha);
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
