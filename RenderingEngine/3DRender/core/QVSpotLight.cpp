#include "core/QVSpotLight.h"

#include "core/Angles.h"
#include "opengl2.0/Shader.h"

namespace multiscene {

void QVSpotLight::lightInfoWithDic(const platform::Value& info) {
    QVLightBase::lightInfoWithDic(info);
    const KeyReader reader(lightKeys, info);
    spotLightDirection_ = reader.vector3("spotLightDirection");
    spotLightExponent_ = reader.number("spotLightExponent");
    spotLightCutOffAngle_ = toRadians(reader.number("spotLightCutOffAngle"));
}

void QVSpotLight::upload(Shader& shader, const std::string& prefix) const {
    QVLightBase::upload(shader, prefix);
    shader.setUniformStructOrArray(prefix + "spotLightExponent", spotLightExponent_);
    shader.setUniformStructOrArray(prefix + "spotLightCutOffAngle", spotLightCutOffAngle_);
    shader.setUniformStructOrArray(prefix + "spotLightDirection", spotLightDirection_);
}

}  // namespace multiscene
