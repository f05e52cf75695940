#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "animation/AnimatedNumber.h"

namespace multiscene {

/// A quad drawn with the template's own shader and one animated number, the uniform "aplae". Draws nothing
/// without such a shader.
class QVQuadCustomShaderOneVariable : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadCustomShaderOneVariable"; }

    void rendInfoWithDic(const platform::Value& info) override;

    float oneVariable() const { return oneVariable_.value(); }

  protected:
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override { oneVariable_.updateData(frame, *this); }
    bool liesInItsBox() const override { return false; }
    void draw(Painter& painter) override;
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    AnimatedNumber oneVariable_{0};
};

}  // namespace multiscene
