#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "animation/AnimatedNumber.h"

namespace multiscene {

/// A quad that shows only where a second picture, of any kind of material, is bright and opaque, with an
/// animated opacity. The mask stays where the quad is; the texture matrix moves the picture behind it. Draws
/// nothing without a mask.
class QVQuadMaskObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadMaskObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

    float renderAlpha() const { return renderAlpha_.value(); }  ///< 0 transparent to 1

  protected:
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override { renderAlpha_.updateData(frame, *this); }
    void draw(Painter& painter) override;
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    void loadMask();

    AnimatedNumber renderAlpha_{1};
    platform::Value maskInfo_;
    std::shared_ptr<QVMaterialBase> maskMaterial_;
};

}  // namespace multiscene
