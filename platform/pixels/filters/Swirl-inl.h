// Private to platform/pixels: the picture turned, the more the nearer to a place.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct SwirlFilter {
    Told told;
    float turns = told.number(0) * told.pass.strength, reach = told.number(1) * told.shorter;
    float x = told.number(2) * told.width, y = told.number(3) * told.height;

    HWY_INLINE At operator()(const At& at) const {
        const RealVector across = plus(at.x, -x), down = plus(at.y, -y);
        const RealVector distance = hn::Sqrt(plus(times(across, across), times(down, down)));
        const RealVector near = hn::Max(minus(real(1), hn::Div(distance, real(reach))), real(0));
        const RealVector turn = times(times(near, near), turns);
        const RealVector cosine = cosineOfTurns(turn), sine = sineOfTurns(turn);
        return {plus(minus(times(across, cosine), times(down, sine)), x),
                plus(plus(times(across, sine), times(down, cosine)), y)};
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
