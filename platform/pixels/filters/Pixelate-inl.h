// Private to platform/pixels: large square pixels.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct PixelateFilter {
    Told told;
    Picture<> blurred{told.pass.aside};
    float tile = std::max(1.0f, std::floor(told.number(0) * told.shorter + 0.5f));

    HWY_INLINE Colour operator()(const Colour&, const At& at) const {
        const auto middle = [&](RealVector x) {
            return times(plus(hn::Floor(hn::Div(x, real(tile))), 0.5f), tile);
        };
        return straight(blurred.smooth(told.aside({middle(at.x), middle(at.y)})));
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
