#pragma once

#include "3DObject/MeshObject3D/QVMeshObject3D.h"
#include "animation/AnimatedNumber.h"

namespace multiscene {

struct SurfaceKind;

/// A surface that a formula gives: a sphere, a flag in the wind, a page that rolls up. It takes light, and
/// depths are compared wherever it is drawn. Key frames move its opacity, the phase of a wave and how far a
/// page is rolled up.
class QVSurfaceObject3D : public QVMeshObject3D {
  public:
    const char* className() const override { return "QVSurfaceObject3D"; }

    void addTraceFields(platform::Value::Dictionary& fields) override;

  protected:
    void readShape(const platform::Value& info) override;
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override;
    void draw(Painter& painter) override;

  private:
    void makeTriangles();

    platform::Value surfaceInfo_;
    const SurfaceKind* kind_ = nullptr;  ///< none: nothing is drawn
    AnimatedNumber opacity_{1}, phase_{0}, curl_{0};
    bool isMoving_ = false, isClosed_ = false;
    float madePhase_ = 0, madeCurl_ = 0;  ///< what the triangles were made with
    std::vector<MeshVertex> moving_;      ///< of a shape that keys change
    Geometry still_;                      ///< of one that they do not
};

}  // namespace multiscene
