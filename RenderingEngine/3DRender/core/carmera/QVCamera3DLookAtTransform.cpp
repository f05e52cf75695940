#include "core/carmera/QVCamera3DLookAtTransform.h"

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>
#include <utility>

namespace multiscene {

namespace {

glm::quat rotationAbout(const glm::vec3& axis, float degrees) {
    const auto radians = static_cast<float>(degrees * 3.14159265358979323846 / 180);
    const float half = radians / 2;
    return {std::cos(half), std::sin(half) * axis.x, std::sin(half) * axis.y, std::sin(half) * axis.z};
}

/// The shortest turn from one unit vector to another; opposite vectors turn about the x axis.
glm::quat shortestArc(const glm::vec3& from, const glm::vec3& to) {
    const float cosine = glm::dot(from, to);
    if (from == -to) return {0, 1, 0, 0};
    const glm::vec3 axis = glm::cross(from, to);
    return glm::normalize(glm::quat(1 + cosine, axis.x, axis.y, axis.z));
}

}  // namespace

void QVCamera3DLookAtTransform::moveCameraToTarget(const glm::vec3& eye) {
    eye_ = eye;
    isDirty_ = true;
}

void QVCamera3DLookAtTransform::rotateFromBase(const glm::vec3& axis, float degrees) {
    const glm::quat turn = rotationAbout(axis, degrees);
    up_ = glm::normalize(turn * baseUp_);
    forward_ = glm::normalize(turn * baseForward_);
    isDirty_ = true;
}

void QVCamera3DLookAtTransform::cameraRotateFromUpVector(float degrees) { rotateFromBase(baseUp_, degrees); }
void QVCamera3DLookAtTransform::cameraRotateFromTargetVector(float degrees) {
    rotateFromBase(baseForward_, degrees);
}
void QVCamera3DLookAtTransform::cameraRotateFromRightVector(float degrees) {
    rotateFromBase(glm::vec3(1, 0, 0), degrees);
}

void QVCamera3DLookAtTransform::cameraLookAtWithTargetPoint(const glm::vec3& point) {
    if (point == eye_) return;  // no direction to turn to
    const glm::quat turn = shortestArc(forward_, glm::normalize(point - eye_));
    up_ = glm::normalize(turn * up_);
    forward_ = glm::normalize(turn * forward_);
    isDirty_ = true;
}

bool QVCamera3DLookAtTransform::computeCameraLookAtTransform() {
    if (!isDirty_) return false;
    const glm::mat4 before = std::exchange(viewMatrix_, glm::lookAtRH(eye_, eye_ + forward_, up_));
    viewpoint_ = glm::vec3(glm::inverse(viewMatrix_)[3]);
    isDirty_ = false;
    return viewMatrix_ != before;
}

}  // namespace multiscene
