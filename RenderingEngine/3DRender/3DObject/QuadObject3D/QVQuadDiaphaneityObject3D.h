#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "animation/AnimatedNumber.h"

namespace multiscene {

/// A quad with an opacity of its own, which key frames animate. Glossary: "diaphaneity" is transparency.
class QVQuadDiaphaneityObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadDiaphaneityObject3D"; }

    float renderAlpha() const { return renderAlpha_.value(); }  ///< 0 transparent to 1

  protected:
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override { renderAlpha_.updateData(frame, *this); }
    Look look() const override { return PlainLook{.opacity = renderAlpha()}; }
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    AnimatedNumber renderAlpha_{1};
};

/// The keys of one change of opacity.
extern const KeyTable alphaAnimationKeys;
/// The keys of a quad with an animated opacity.
extern const KeyTable diaphaneityKeys;

}  // namespace multiscene
