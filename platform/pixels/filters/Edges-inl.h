// Private to platform/pixels: outlines, in one colour on another.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct EdgesFilter {
    Told told;
    Picture<> picture{told.pass.picture};
    float reach = std::max(1.0f, std::floor(told.number(0) * told.shorter + 0.5f)), gain = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const auto level = [&](float x, float y) {
            return grey(picture.texel({plus(at.x, x * reach), plus(at.y, y * reach)}));
        };
        const RealVector a = level(-1, -1), b = level(0, -1), d = level(1, -1), e = level(-1, 0),
                         f = level(1, 0), g = level(-1, 1), h = level(0, 1), i = level(1, 1);
        const auto slope = [](RealVector near, RealVector middle, RealVector far) {
            return plus(plus(near, far), plus(middle, middle));
        };
        const RealVector x = minus(slope(d, f, i), slope(a, e, g)), y = minus(slope(g, h, i), slope(a, b, d));
        const RealVector size = times(hn::Sqrt(plus(times(x, x), times(y, y))), 0.25f * gain);
        const Colour line = told.colour(0), ground = told.colour(1);
        const Colour behind = mixed(c, ground, ground.alpha);
        return mixed(behind, line, times(hn::Min(size, real(1)), line.alpha));
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
