// Private to platform/pixels: light that came in at the side of the camera.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct LightLeakFilter {
    Told told;
    float phase = told.number(0), size = told.number(1);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const Colour first = told.colour(0), second = told.colour(1);
        const RealVector a = spot(at, 0.02f, 0.3f, 0, size), b = spot(at, 1.0f, 0.75f, 0.4f, 0.8f * size);
        // Lights add up as on a screen: what is bright stays bright.
        const auto lit = [](RealVector x, RealVector light) {
            return minus(real(1), times(minus(real(1), x), minus(real(1), light)));
        };
        return each(each(c, first,
                         [&](RealVector x, RealVector y) { return lit(x, times(y, times(first.alpha, a))); }),
                    second,
                    [&](RealVector x, RealVector y) { return lit(x, times(y, times(second.alpha, b))); });
    }

    // A glow round a place (parts of the sides) that wanders up and down.
    HWY_INLINE RealVector spot(const At& at, float x, float y, float turn, float reach) const {
        const RealVector turns = real(phase + turn);
        const RealVector across =
            minus(times(at.x, 1 / told.width), plus(times(cosineOfTurns(turns), 0.08f), x));
        const RealVector down =
            minus(times(at.y, 1 / told.height), plus(times(sineOfTurns(turns), 0.18f), y));
        const RealVector distance =
            hn::Div(plus(times(across, across), times(times(down, down), 0.5f)), real(reach * reach));
        const RealVector left = hn::Max(minus(real(1), distance), real(0));
        return times(left, left);
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
