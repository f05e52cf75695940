#pragma once

#include <memory>

#include "3DObject/SelectShaderObject3D/QVQuadTextureShaderRenderBase.h"

namespace multiscene {

/// A quad whose way of drawing is chosen by "renderType"; an unknown one draws nothing.
class QVQuadTextureRenderSelectShaderObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadTextureRenderSelectShaderObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    void updateDue(const Tick& tick) override;
    void draw(Painter& painter) override;
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    std::unique_ptr<QVQuadTextureShaderRenderBase> shaderRender_;
};

}  // namespace multiscene
