#pragma once

#include <glm/glm.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "animation/KeyFrames.h"
#include "core/LightMaterial.h"
#include "painter/Draw.h"

namespace multiscene {

extern const KeyTable lightKeys;
extern const KeyTable spotLightKeys;

/// A light of a scene or node: placement, colours, and their animation. Render queue only.
class QVLightBase {
  public:
    virtual ~QVLightBase() = default;

    using Lights = std::vector<std::shared_ptr<QVLightBase>>;

    /// One light for each dictionary whose "lightSourceType" is 1 to 3; others are left out.
    static Lights lightSourceArrayWithInfo(const platform::Value& info);
    static std::shared_ptr<QVLightBase> lightSourceWithDic(const platform::Value& info);

    /// What falls on a surface. Colours of the lights themselves are not part of it: the material colours
    /// carry them.
    static std::vector<Light> lightsWithLightArray(const Lights& lights, bool isLightEnable);
    /// Adds what a lit program takes of them.
    static void glslLightParamWithLightArray(const Lights& lights, Uniforms& uniforms, bool isLightEnable);

    virtual void lightInfoWithDic(const platform::Value& info);
    void updateData(int64_t frame);

    LightKind lightSourceType() const { return lightSourceType_; }
    const glm::vec3& lightSourceColor() const { return lightSourceColor_; }
    /// A position; the direction of a directional light.
    const glm::vec3& lightSourcePosition() const { return lightSourcePosition_; }
    const LightMaterial& material() const { return material_; }

  protected:
    virtual Light light() const;

  private:
    /// What a key moves, by eases of its own.
    struct KeyMoves {
        std::optional<Move<glm::vec3>> position, color;
    };
    static KeyMoves keyMovesOf(const platform::Value& key);

    LightKind lightSourceType_ = LightKind::Point;
    glm::vec3 lightSourceColor_{1}, lightSourcePosition_{0, 0, 1};
    LightMaterial material_;
    KeyFrames<KeyMoves> keyAnimation_;
};

}  // namespace multiscene
