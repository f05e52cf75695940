#pragma once

#include "3DObject/MeshObject3D/QVMeshObject3D.h"

namespace multiscene {

/// A flat rectangle, seen from both sides, that takes light.
class QVPlaneObject3D : public QVMeshObject3D {
  public:
    const char* className() const override { return "QVPlaneObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    std::vector<MeshFace> facesOf(const Box& box) const override;
};

}  // namespace multiscene
