// Private to platform/pixels: red and blue pulled apart.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct ColorShiftFilter {
    Told told;
    Picture<> picture{told.pass.picture};
    RealVector reach = real(told.number(0) * told.shorter), turn = real(told.number(1));
    RealVector x = times(cosineOfTurns(turn), reach), y = times(sineOfTurns(turn), reach);

    HWY_INLINE Colour operator()(const Colour& c, const At& at) const {
        const Colour before = straight(picture.smooth({minus(at.x, x), minus(at.y, y)}));
        const Colour behind = straight(picture.smooth({plus(at.x, x), plus(at.y, y)}));
        return {before.red, c.green, behind.blue, c.alpha};
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
