#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"

namespace multiscene {

/// A quad drawn with the template's own shader and one animated number, the uniform "aplae". Draws nothing
/// without such a shader.
class QVQuadCustomShaderOneVariable : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadCustomShaderOneVariable"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void render(const platform::CMTime& time) override;
    void didNewKeyFrameWithEaseValue(float easeValue, float progressValue,
                                     const platform::Value& animationInfo) override;

    float oneVariable() const { return oneVariable_; }

  protected:
    bool liesInItsBox() const override { return false; }
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    float oneVariable_ = 0;
};

}  // namespace multiscene
