// Private to platform/pixels: warmer or cooler light.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct TemperatureFilter {
    Told told;
    float warmth = told.number(0), tint = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        return {times(c.red, 1 + 0.28f * warmth + 0.1f * tint),
                times(c.green, 1 + 0.04f * warmth - 0.18f * tint),
                times(c.blue, 1 - 0.32f * warmth + 0.1f * tint), c.alpha};
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
