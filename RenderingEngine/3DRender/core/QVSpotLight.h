#pragma once

#include "core/QVLightBase.h"

namespace multiscene {

/// Shines from its position into a cone.
class QVSpotLight : public QVLightBase {
  public:
    void lightInfoWithDic(const platform::Value& info) override;
    const glm::vec3& spotLightDirection() const { return spotLightDirection_; }
    float spotLightExponent() const { return spotLightExponent_; }
    float spotLightCutOffAngle() const { return spotLightCutOffAngle_; }  ///< radians

  protected:
    Light light() const override;

  private:
    glm::vec3 spotLightDirection_{0};
    float spotLightExponent_ = 0, spotLightCutOffAngle_ = 0;
};

}  // namespace multiscene
