#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"

namespace multiscene {

/// A quad with an opacity of its own, which key frames animate. Glossary: "diaphaneity" is transparency.
class QVQuadDiaphaneityObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadDiaphaneityObject3D"; }

    void loadTextureFinsh() override;
    void didNewKeyFrameWithEaseValue(float easeValue, float progressValue,
                                     const platform::Value& animationInfo) override;

    float renderAlpha() const { return renderAlpha_; }  ///< 0 transparent to 1
    void setRenderAlpha(float alpha) { renderAlpha_ = alpha; }
    /// The texture's colours are multiplied by alpha; taken from the material when that is loaded.
    bool isPreMultiplication() const { return isPreMultiplication_; }

  protected:
    const char* shaderName() const override { return "faded_Shader"; }
    void setUniforms(Shader& shader) override;
    DrawnTexture drawnTexture() const override;
    void addTraceValues(platform::Value::Dictionary& values) const override;

  private:
    float renderAlpha_ = 1;
    bool isPreMultiplication_ = false;
};

/// The keys of one change of opacity.
extern const KeyTable alphaAnimationKeys;
/// The keys of a quad with an animated opacity.
extern const KeyTable diaphaneityKeys;

}  // namespace multiscene
