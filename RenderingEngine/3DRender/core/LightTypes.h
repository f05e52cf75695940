// The kinds of light. Point and directional lights differ in nothing but their number: the shader tells them
// apart.
#pragma once

#include "core/QVLightBase.h"

namespace multiscene {

class QVPointLight : public QVLightBase {};

class QVDirectionalLight : public QVLightBase {};

class QVSpotLight : public QVLightBase {
  public:
    void lightInfoWithDic(const platform::Value& info) override;
    const glm::vec3& spotLightDirection() const { return spotLightDirection_; }
    float spotLightExponent() const { return spotLightExponent_; }
    float spotLightCutOffAngle() const { return spotLightCutOffAngle_; }  ///< radians

  protected:
    void upload(Shader& shader, const std::string& prefix) const override;

  private:
    glm::vec3 spotLightDirection_{0};
    float spotLightExponent_ = 0, spotLightCutOffAngle_ = 0;
};

using LightMaker = std::shared_ptr<QVLightBase> (*)();

/// The maker of a "lightSourceType"; null for a number that names no light.
LightMaker lightMaker(int64_t lightSourceType);

}  // namespace multiscene
