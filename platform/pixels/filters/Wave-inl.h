// Private to platform/pixels: rows that swing to and fro.
// Included by FilterLoops.cpp alone, once for each instruction set.
HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct WaveFilter {
    Told told;
    float height = told.number(0) * told.shorter * told.pass.strength, waves = told.number(1),
          phase = told.number(2);

    HWY_INLINE At operator()(const At& at) const {
        const RealVector turns = plus(times(times(at.y, 1 / told.height), waves), -phase);
        return {plus(at.x, times(sineOfTurns(turns), height)), at.y};
    }
};

}  // namespace platform::HWY_NAMESPACE::filter
HWY_AFTER_NAMESPACE();
