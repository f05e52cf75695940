// Private to platform/pixels: few steps of colour.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct PosteriseFilter {
    Told told;
    float steps = std::floor(told.number(0) + 0.5f) - 1;

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        return each(
            c, [&](RealVector x) { return hn::Div(hn::Floor(plus(times(x, steps), 0.5f)), real(steps)); });
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
