#pragma once

#include "3DObject/SelectShaderObject3D/QVQuadTextureShaderRenderBase.h"
#include "animation/KeyFrames.h"

namespace multiscene {

/// The keys of "RenderInfo" for a gradient.
extern const KeyTable alphaGradualKeys;

/// Draws a quad whose opacity changes from one place to another. Each end is a pair: the place along the
/// axis, 0 to 1, and the opacity there. Key frames move the first end only.
class QVQuadAlphaGradualNoLight : public QVQuadTextureShaderRenderBase {
  public:
    using QVQuadTextureShaderRenderBase::QVQuadTextureShaderRenderBase;

    void renderInfoWithDic(const platform::Value& info) override;
    /// Keys ease the progress with an ease of their own, not with the key's.
    void updateData(int64_t frame) override;
    void render(Painter& painter) override;
    void addTraceValues(platform::Value::Dictionary& values) const override;

    const glm::vec2& startAlpha() const { return startAlpha_; }
    const glm::vec2& endAlpha() const { return endAlpha_; }
    /// 0 from left to right, 1 from top to bottom, 2 and 3 the same with soft ends.
    int32_t interpolation() const { return interpolation_; }

  private:
    glm::vec2 startAlpha_{0}, endAlpha_{0};
    int32_t interpolation_ = 0;
    KeyFrames<Move<glm::vec2>> keyAnimation_;
};

}  // namespace multiscene
