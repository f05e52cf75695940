#pragma once

#include "3DObject/MeshObject3D/QVMeshObject3D.h"

namespace multiscene {

/// A box with the same texture on each of its six sides, that takes light.
class QVCubeObject3D : public QVMeshObject3D {
  public:
    const char* className() const override { return "QVCubeObject3D"; }

  protected:
    void readShape(const platform::Value& info) override;
};

}  // namespace multiscene
