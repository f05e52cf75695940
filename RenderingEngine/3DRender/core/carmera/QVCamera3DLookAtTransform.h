#pragma once

#include <glm/glm.hpp>

namespace multiscene {

/// The eye and its orientation. Rotations are absolute, from the base vectors; a look-at turn accumulates on
/// the current ones.
class QVCamera3DLookAtTransform {
  public:
    void moveCameraToTarget(const glm::vec3& eye);
    void cameraLookAtWithTargetPoint(const glm::vec3& point);
    void cameraRotateFromUpVector(float degrees);
    void cameraRotateFromTargetVector(float degrees);
    void cameraRotateFromRightVector(float degrees);

    /// True when the view matrix is another one than before.
    bool computeCameraLookAtTransform();
    /// The view matrix of the last computation.
    const glm::mat4& cameraLookAtTransform() const { return viewMatrix_; }
    /// Where that view is seen from.
    const glm::vec3& viewpoint() const { return viewpoint_; }

  private:
    void rotateFromBase(const glm::vec3& axis, float degrees);

    glm::vec3 eye_{0};
    glm::vec3 baseUp_{0, 1, 0}, baseForward_{0, 0, -1};
    glm::vec3 up_{0, 1, 0}, forward_{0, 0, -1};
    bool isDirty_ = true;
    glm::mat4 viewMatrix_{1};
    glm::vec3 viewpoint_{0};
};

}  // namespace multiscene
