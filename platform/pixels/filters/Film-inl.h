// Private to platform/pixels: colours by a table of three dimensions, which lies beside: one square of red
// and green for each blue. Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct FilmFilter {
    Told told;
    Picture<> table{told.pass.aside};
    float side = static_cast<float>(told.pass.aside.height);

    HWY_INLINE Colour operator()(const Colour& c, const At&) const {
        const auto along = [&](RealVector x) { return times(x, side - 1); };
        const RealVector blue = along(c.blue);
        const RealVector nearer = hn::Min(hn::Floor(blue), real(side - 2));
        const At at{plus(along(c.red), 0.5f), plus(along(c.green), 0.5f)};
        const auto slice = [&](RealVector number) {
            return table.smooth({plus(at.x, times(number, side)), at.y});
        };
        return withAlpha(mixed(slice(nearer), slice(plus(nearer, 1)), minus(blue, nearer)), c.alpha);
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
