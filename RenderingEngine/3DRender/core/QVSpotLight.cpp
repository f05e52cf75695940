#include "core/QVSpotLight.h"

#include <cmath>

#include "format/Angles.h"

namespace multiscene {

static constexpr Key spotLightKeyList[] = {
    {.name = "spotLightDirection",
     .type = KeyType::Vector3,
     .fallback = "0,0,0",
     .meaning = "where it shines to; 0,0,0: straight ahead, 0,0,-1"},
    {.name = "spotLightExponent",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "fall-off to the edge"},
    {.name = "spotLightCutOffAngle",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "half the cone's angle",
     .minimum = 0,
     .maximum = 180},
};
const KeyTable spotLightKeys{"Spot light", "\"lightSourceType\" 3: shines from its place into a cone.",
                             nullptr, spotLightKeyList};

void QVSpotLight::lightInfoWithDic(const platform::Value& info) {
    QVLightBase::lightInfoWithDic(info);
    const KeyReader reader(spotLightKeys, info);
    spotLightDirection_ = reader.vector3("spotLightDirection");
    spotLightExponent_ = reader.number("spotLightExponent");
    spotLightCutOffAngle_ = toRadians(reader.number("spotLightCutOffAngle"));
}

void QVSpotLight::addUniforms(Uniforms& uniforms, const std::string& prefix) const {
    QVLightBase::addUniforms(uniforms, prefix);
    uniforms.emplace_back(prefix + "spotLightExponent", spotLightExponent_);
    uniforms.emplace_back(prefix + "spotLightCutOffAngle", spotLightCutOffAngle_);
    uniforms.emplace_back(prefix + "spotLightCutOffCosine", std::cos(spotLightCutOffAngle_));
    uniforms.emplace_back(prefix + "spotLightDirection", spotLightDirection_);
}

}  // namespace multiscene
