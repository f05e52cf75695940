#pragma once

#include "3DObject/QuadObject3D/QVQuadObject3D.h"

namespace multiscene {

/// A quad for picture frames. Drawn as a plain quad: it has no image filters.
class QVQuadFrameObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadFrameObject3D"; }
};

}  // namespace multiscene
