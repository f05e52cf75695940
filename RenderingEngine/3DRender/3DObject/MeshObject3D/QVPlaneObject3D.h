#pragma once

#include "3DObject/MeshObject3D/QVMeshObject3D.h"

namespace multiscene {

/// A flat rectangle, seen from both sides, that takes light.
class QVPlaneObject3D : public QVMeshObject3D {
  public:
    const char* className() const override { return "QVPlaneObject3D"; }

  protected:
    void readShape(const platform::Value& info) override;
};

}  // namespace multiscene
