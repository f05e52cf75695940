#pragma once

#include "TimeSource/QVSingleVideoBgObject3D.h"

namespace multiscene {

/// A background video with one colour keyed out.
class QVChromaKeyVideoBgObject : public QVSingleVideoBgObject3D {
  public:
    using QVSingleVideoBgObject3D::QVSingleVideoBgObject3D;

    const char* className() const override { return "QVChromaKeyVideoBgObject"; }
    void rendInfoWithDic(const platform::Value& info) override;

    /// Width of the soft edge of the key. Glossary: "eclosion" is feathering.
    float maxEclosion() const { return maxEclosion_; }

  protected:
    Look look() const override { return KeyLook{.color = chromakeyColor_, .softEdge = maxEclosion_}; }
    /// The key is taken out of the colours as they are.
    bool premultipliesAlpha() const override { return false; }

  private:
    glm::vec4 chromakeyColor_{0};
    float maxEclosion_ = 0;
};

}  // namespace multiscene
