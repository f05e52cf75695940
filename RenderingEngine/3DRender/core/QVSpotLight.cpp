#include "core/QVSpotLight.h"

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

Light QVSpotLight::light() const {
    Light light = QVLightBase::light();
    light.spotDirection = spotLightDirection_;
    light.spotExponent = spotLightExponent_;
    light.spotAngle = spotLightCutOffAngle_;
    return light;
}

}  // namespace multiscene
