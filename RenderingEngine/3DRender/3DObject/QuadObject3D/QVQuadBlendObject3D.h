#pragma once

#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"

namespace multiscene {

/// A quad with an animated opacity and a blend function of its own, which is set in the quad's frames and
/// stays set until the node's bracket is closed.
class QVQuadBlendObject3D : public QVQuadDiaphaneityObject3D {
  public:
    const char* className() const override { return "QVQuadBlendObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    void draw(Painter& painter) override;

  private:
    uint32_t quadSrcBlend_ = 0, quadDecBlend_ = 0;  // GL blend factors
};

}  // namespace multiscene
