#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "3DObject/SelectShaderObject3D/QVShaderRenderBase.h"

namespace multiscene {

/// Draws the geometry and texture of a quad.
class QVQuadTextureShaderRenderBase : public QVShaderRenderBase {
  public:
    /// The quad owns this object.
    explicit QVQuadTextureShaderRenderBase(QVQuadObject3D& quadObject) : quad3DObject_(quadObject) {}

  protected:
    QVQuadObject3D& quad3DObject() const { return quad3DObject_; }

  private:
    QVQuadObject3D& quad3DObject_;
};

}  // namespace multiscene
