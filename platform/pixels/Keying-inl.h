// Private to platform/pixels: one colour keyed out. A pixel is taken as a mixture of the key colour and
// something in front of it. Included once for each instruction set.
#if defined(MULTISCENE_KEYING) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_KEYING
#undef MULTISCENE_KEYING
#else
#define MULTISCENE_KEYING
#endif

#include <algorithm>
#include <cmath>

#include "platform/pixels/PixelVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

class KeyShare {
  public:
    explicit KeyShare(const std::array<float, 4>& colour) : colour_(colour) {
        const std::array<float, 3> key = differences(colour[0], colour[1], colour[2]);
        const float saturation = std::max(std::max(std::abs(key[0]), std::abs(key[1])), std::abs(key[2]));
        isGrey_ = saturation < 0.04f;
        float counted = 0;
        for (size_t i = 0; i < 3; ++i) {
            // Channels that are nearly alike in the key tell nothing.
            const bool counts = !isGrey_ && std::abs(key[i]) >= 0.5f * saturation;
            scale_[i] = counts ? 1 / (255 * key[i]) : 0;
            spare_[i] = counts ? 0.0f : 1.0f;
            counted += counts ? 1.0f : 0.0f;
        }
        meanPart_ = isGrey_ ? 0 : 1 / counted;
    }

    // `cut` by which a pixel is hidden, `freed` by which its colour is freed of the key's.
    struct Shares {
        RealVector cut, freed;
    };

    HWY_INLINE Shares of(const Channels& c) const {
        if (isGrey_) {
            const RealVector share = bounded(hn::Sub(real(1), distance(c)), 0, 1);
            return {share, share};
        }
        const RealVector a = hn::Mul(hn::Sub(c.red, c.green), real(scale_[0]));
        const RealVector b = hn::Mul(hn::Sub(c.green, c.blue), real(scale_[1]));
        const RealVector d = hn::Mul(hn::Sub(c.blue, c.red), real(scale_[2]));
        const RealVector mean = hn::Mul(hn::Add(hn::Add(a, b), d), real(meanPart_));
        const RealVector least = hn::Min(hn::Min(hn::Add(a, real(spare_[0])), hn::Add(b, real(spare_[1]))),
                                         hn::Add(d, real(spare_[2])));
        const RealVector sure = hn::Mul(hn::Max(least, real(0)), real(2));
        const RealVector freed = hn::Min(hn::Add(between(least, mean, real(0.3f)), sure), mean);
        return {bounded(least, 0, 1), bounded(freed, 0, 1)};
    }

  private:
    static std::array<float, 3> differences(float red, float green, float blue) {
        return {red - green, green - blue, blue - red};
    }

    HWY_INLINE RealVector distance(const Channels& c) const {
        const auto square = [&](RealVector colour, float key) {
            const RealVector far = hn::Sub(hn::Mul(colour, real(1.0f / 255)), real(key));
            return hn::Mul(far, far);
        };
        return hn::Sqrt(hn::Add(hn::Add(square(c.red, colour_[0]), square(c.green, colour_[1])),
                                square(c.blue, colour_[2])));
    }

    std::array<float, 4> colour_;
    std::array<float, 3> scale_{}, spare_{};
    float meanPart_ = 0;
    bool isGrey_ = false;
};

constexpr float kFullShare = 0.75f;  // from this share on a pixel is all backdrop

// What lies in front of the key colour, and how much of it there is, 0 to 1.
HWY_INLINE RealVector takeKeyOut(const KeyPaint& key, const KeyShare& keyShare, Channels& c) {
    const KeyShare::Shares share = keyShare.of(c);
    const RealVector scale = hn::Div(real(1), hn::Max(hn::Sub(real(1), share.freed), real(1 - kFullShare)));
    const auto front = [&](RealVector colour, float keyed) {
        return bounded(hn::Mul(hn::Sub(colour, hn::Mul(share.freed, real(keyed * 255))), scale), 0, 255);
    };
    c = {front(c.blue, key.color[2]), front(c.green, key.color[1]), front(c.red, key.color[0]), c.alpha};
    const float edge = std::min(std::max(key.softEdge, 0.001f), kFullShare);
    return bounded(hn::Mul(hn::Sub(real(kFullShare), share.cut), real(1 / edge)), 0, 1);
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
