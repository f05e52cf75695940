// Private to platform/pixels: the colours of lit triangles.
// Included once for each instruction set.
#if defined(MULTISCENE_MESHLIGHTING) == defined(HWY_TARGET_TOGGLE)
#ifdef MULTISCENE_MESHLIGHTING
#undef MULTISCENE_MESHLIGHTING
#else
#define MULTISCENE_MESHLIGHTING
#endif

#include "platform/pixels/MeshPaint.h"
#include "platform/pixels/Sampling-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

// --- Roots and powers, from operations that give the same bits on every processor.

// 1 / sqrt(x), wrong by 5e-6 of it; a large number for 0.
HWY_INLINE RealVector inverseRoot(RealVector x) {
    const PixelVector guess =
        hn::Sub(hn::Set(Pixels(), 0x5F375A86), hn::ShiftRight<1>(hn::BitCast(Pixels(), x)));
    const RealVector half = hn::Mul(real(0.5f), x);
    RealVector root = hn::BitCast(Reals(), guess);
    for (int i = 0; i < 2; ++i) root = hn::Mul(root, hn::Sub(real(1.5f), hn::Mul(half, hn::Mul(root, root))));
    return root;
}

template <size_t kCount>
HWY_INLINE RealVector polynomial(RealVector x, const float (&factors)[kCount]) {
    RealVector sum = real(factors[kCount - 1]);
    for (size_t i = kCount - 1; i-- > 0;) sum = hn::Add(hn::Mul(sum, x), real(factors[i]));
    return sum;
}

// The dual logarithm of a positive number, wrong by 1e-6.
HWY_INLINE RealVector logarithm(RealVector x) {
    constexpr float kFactors[] = {1.44269652f,  -0.721360179f, 0.480613125f, -0.359524455f,
                                  0.296119557f, -0.267963871f, 0.168186591f};
    constexpr int32_t kRootOfHalf = 0x3F3504F3;
    const PlaceVector bits = hn::BitCast(Places(), x);
    const PlaceVector whole = hn::ShiftRight<23>(hn::Sub(bits, hn::Set(Places(), kRootOfHalf)));
    const RealVector rest = hn::Sub(hn::BitCast(Reals(), hn::Sub(bits, hn::ShiftLeft<23>(whole))), real(1));
    return hn::Add(hn::ConvertTo(Reals(), whole), hn::Mul(rest, polynomial(rest, kFactors)));
}

// 2 to the power of x, wrong by 1e-6 of it.
HWY_INLINE RealVector powerOfTwo(RealVector x) {
    constexpr float kFactors[] = {0.693147568f, 0.240207194f, 0.0556570544f, 0.0091993876f, 0.00178836874f};
    const RealVector near = bounded(x, -126, 126), whole = hn::Floor(near), rest = hn::Sub(near, whole);
    const RealVector part = hn::Add(real(1), hn::Mul(rest, polynomial(rest, kFactors)));
    const PlaceVector exponent = hn::ShiftLeft<23>(hn::ConvertTo(Places(), whole));
    return hn::BitCast(Reals(), hn::Add(hn::BitCast(Places(), part), exponent));
}

HWY_INLINE RealVector power(RealVector x, const MeshPower& power) {
    RealVector factor = hn::Max(x, real(power.least));
    if (!power.isWhole) return powerOfTwo(hn::Mul(logarithm(factor), real(power.exponent)));
    RealVector product = real(1);
    for (auto left = static_cast<unsigned>(power.exponent); left != 0; left >>= 1) {
        if (left & 1) product = hn::Mul(product, factor);
        factor = hn::Mul(factor, factor);
    }
    return product;
}

// --- Vectors of three.

struct Vectors {
    RealVector x, y, z;
};

HWY_INLINE Vectors vectors(const Vector3& v) { return {real(v[0]), real(v[1]), real(v[2])}; }
HWY_INLINE Vectors difference(const Vectors& a, const Vectors& b) {
    return {hn::Sub(a.x, b.x), hn::Sub(a.y, b.y), hn::Sub(a.z, b.z)};
}
HWY_INLINE Vectors scaled(const Vectors& v, RealVector part) {
    return {hn::Mul(v.x, part), hn::Mul(v.y, part), hn::Mul(v.z, part)};
}
HWY_INLINE RealVector dot(const Vectors& a, const Vectors& b) {
    return hn::Add(hn::Add(hn::Mul(a.x, b.x), hn::Mul(a.y, b.y)), hn::Mul(a.z, b.z));
}
HWY_INLINE void add(const Vector3& colour, RealVector part, Vectors& sum) {
    sum = {hn::Add(sum.x, hn::Mul(real(colour[0]), part)), hn::Add(sum.y, hn::Mul(real(colour[1]), part)),
           hn::Add(sum.z, hn::Mul(real(colour[2]), part))};
}

// Of length 1; `otherwise` for one of length 0, which has no direction.
HWY_INLINE Vectors direction(const Vectors& v, const Vectors& otherwise) {
    const RealVector squared = dot(v, v);
    const auto hasOne = hn::Gt(squared, hn::Zero(Reals()));
    const Vectors turned = scaled(v, inverseRoot(squared));
    return {hn::IfThenElse(hasOne, turned.x, otherwise.x), hn::IfThenElse(hasOne, turned.y, otherwise.y),
            hn::IfThenElse(hasOne, turned.z, otherwise.z)};
}

// --- Light.

// What comes of a triangle's planes at some pixels.
struct Surfaces {
    Vectors place, normal;
    RealVector u, v;
};

// Light that colours surfaces, and that lies over them; red, green, blue as x, y, z.
struct Light {
    Vectors surface, gloss;
};

// What adds nothing at any of the pixels is not computed.
HWY_INLINE void addLight(const PreparedLight& prepared, const Surfaces& at, const Vectors& toEye,
                         Light& sum) {
    const MeshLight& light = prepared.light;
    const RealVector zero = hn::Zero(Reals());
    Vectors toLight = vectors(light.place);
    if (light.kind != MeshLightKind::Directional)
        toLight = direction(difference(toLight, at.place), at.normal);
    else if (light.place == Vector3{0, 0, 0})
        toLight = at.normal;
    const RealVector facing = dot(at.normal, toLight);
    auto isLit = hn::Gt(facing, zero);
    RealVector inCone = zero;
    if (light.kind == MeshLightKind::Spot) {
        inCone = hn::Sub(zero, dot(toLight, vectors(light.coneDirection)));
        isLit = hn::And(isLit, hn::Ge(inCone, real(light.coneCosine)));
    }
    if (hn::AllFalse(Reals(), isLit)) return;
    RealVector strength = hn::IfThenElse(isLit, real(1), zero);
    if (light.kind == MeshLightKind::Spot) strength = hn::Mul(strength, power(inCone, prepared.cone));
    add(light.diffuse, hn::Mul(strength, facing), sum.surface);
    if (!prepared.isGlossy) return;
    const RealVector twice = hn::Mul(hn::Add(facing, facing), dot(at.normal, toEye));
    const RealVector mirrored = hn::Sub(twice, dot(toLight, toEye));
    add(light.specular, hn::Mul(strength, power(mirrored, prepared.shine)), sum.gloss);
}

// --- Colours as the blend function gets them.

class MeshShader {
  public:
    explicit MeshShader(const PreparedMesh& mesh)
        : mesh_(mesh),
          paint_(mesh.paint),
          sampler_({paint_.picture, paint_.wrap, {}}),
          glowSampler_({paint_.glowPicture, paint_.wrap, {}}),
          isTinted_(paint_.tint != std::array<float, 4>{1, 1, 1, 1}),
          glows_(paint_.glow != Vector3{0, 0, 0}) {}

    HWY_INLINE PixelVector at(const Surfaces& surfaces) const {
        Channels c = straightColours(surfaces);
        if (!mesh_.lights.empty()) lighten(surfaces, c);
        if (glows_) addGlow(surfaces, c);
        if (paint_.opacity < 1) c.alpha = hn::Mul(c.alpha, real(paint_.opacity));
        if (mesh_.sent == SentColours::Faded) multiply(c, real(paint_.opacity));
        if (mesh_.sent == SentColours::Multiplied && !mesh_.hides)
            multiply(c, hn::Mul(c.alpha, real(1.0f / 255)));
        return packed(c);
    }

  private:
    static HWY_INLINE void multiply(Channels& c, RealVector part) {
        c = {hn::Mul(c.blue, part), hn::Mul(c.green, part), hn::Mul(c.red, part), c.alpha};
    }

    HWY_INLINE Channels straightColours(const Surfaces& surfaces) const {
        const auto& tint = paint_.tint;
        if (!paint_.picture.pixels)
            return {real(255 * tint[2]), real(255 * tint[1]), real(255 * tint[0]), real(255 * tint[3])};
        Channels c = channels(texels(paint_.picture, sampler_, surfaces.u, surfaces.v));
        if (paint_.premultiplied && !paint_.picture.opaque) c = dividedByAlpha(c);
        if (!isTinted_) return c;
        return {hn::Mul(c.blue, real(tint[2])), hn::Mul(c.green, real(tint[1])),
                hn::Mul(c.red, real(tint[0])), hn::Mul(c.alpha, real(tint[3]))};
    }

    // Of places from 0 to 1.
    HWY_INLINE PixelVector texels(const Surface& picture, const Sampler& sampler, RealVector u,
                                  RealVector v) const {
        if (paint_.wrap == Wrap::Repeat) {
            u = hn::Sub(u, hn::Floor(u));
            v = hn::Sub(v, hn::Floor(v));
        }
        const PlaceVector column = fixedPoint(hn::Mul(u, real(static_cast<float>(picture.width))));
        const PlaceVector row = fixedPoint(hn::Mul(v, real(static_cast<float>(picture.height))));
        return sampler.isInside(column, row) ? sampler.atInside(column, row) : sampler.at(column, row);
    }

    HWY_INLINE void addGlow(const Surfaces& surfaces, Channels& c) const {
        const RealVector most = real(255);
        Channels light{most, most, most, most};
        if (paint_.glowPicture.pixels)
            light = channels(texels(paint_.glowPicture, glowSampler_, surfaces.u, surfaces.v));
        const auto sum = [](RealVector colour, RealVector of, float part) {
            return bounded(hn::Add(colour, hn::Mul(of, real(part))), 0, 255);
        };
        c = {sum(c.blue, light.blue, paint_.glow[2]), sum(c.green, light.green, paint_.glow[1]),
             sum(c.red, light.red, paint_.glow[0]), c.alpha};
    }

    HWY_INLINE void lighten(Surfaces surfaces, Channels& c) const {
        if (paint_.isSmooth) surfaces.normal = direction(surfaces.normal, surfaces.normal);
        Light light{vectors(mesh_.ambient), vectors({0, 0, 0})};
        const Vectors toEye =
            mesh_.isGlossy ? direction(difference(vectors(paint_.eye), surfaces.place), surfaces.normal)
                           : surfaces.normal;
        for (const PreparedLight& each : mesh_.lights) addLight(each, surfaces, toEye, light);
        const auto lit = [](RealVector colour, RealVector surface, RealVector gloss) {
            return bounded(hn::Add(hn::Mul(colour, surface), hn::Mul(gloss, real(255))), 0, 255);
        };
        c = {lit(c.blue, light.surface.z, light.gloss.z), lit(c.green, light.surface.y, light.gloss.y),
             lit(c.red, light.surface.x, light.gloss.x), c.alpha};
    }

    const PreparedMesh& mesh_;
    const MeshPaint& paint_;
    const Sampler sampler_, glowSampler_;
    const bool isTinted_, glows_;
};

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
