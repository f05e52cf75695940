// Private to platform/pixels: a pencil's drawing on paper.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct SketchFilter {
    Told told;
    Picture<> blurred{told.pass.aside};
    float darkness = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        constexpr float kLeast = 0.1f;  // keeps what is dark all over from being all pencil
        const RealVector around = grey(straight(blurred.smooth(told.aside(at))));
        const RealVector level = grey(c);
        const RealVector ratio = hn::Div(plus(level, kLeast), plus(around, kLeast));
        const RealVector strokes = plus(times(hn::Max(minus(real(1), ratio), real(0)), darkness), 0.0f);
        // A light wash of the shadows.
        const RealVector wash = times(soft(minus(real(1), level), 0.45f, 0.6f), 0.35f);
        const RealVector pencil = clamped(plus(strokes, wash));
        return withAlpha(mixed(told.colour(0), told.colour(1), pencil), c.alpha);
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
