#include "core/QVObject3D.h"

#include <glm/gtc/matrix_transform.hpp>

#include "format/Angles.h"

namespace multiscene {

void QVObject3D::set(float& field, float value) {
    field = value;
    invalidateTransform();
}

void QVObject3D::setX(float x) { set(position_.x, x); }
void QVObject3D::setY(float y) { set(position_.y, y); }
void QVObject3D::setZ(float z) { set(position_.z, z); }
void QVObject3D::setScaleX(float scale) { set(scale_.x, scale); }
void QVObject3D::setScaleY(float scale) { set(scale_.y, scale); }
void QVObject3D::setScaleZ(float scale) { set(scale_.z, scale); }
void QVObject3D::setRotationX(float degrees) { set(rotation_.x, toRadians(degrees)); }
void QVObject3D::setRotationY(float degrees) { set(rotation_.y, toRadians(degrees)); }
void QVObject3D::setRotationZ(float degrees) { set(rotation_.z, toRadians(degrees)); }
float QVObject3D::rotationX() const { return toDegrees(rotation_.x); }
float QVObject3D::rotationY() const { return toDegrees(rotation_.y); }
float QVObject3D::rotationZ() const { return toDegrees(rotation_.z); }

void QVObject3D::setPosition(const glm::vec3& position) {
    position_ = position;
    invalidateTransform();
}

void QVObject3D::setScale(const glm::vec3& scale) {
    scale_ = scale;
    invalidateTransform();
}

void QVObject3D::setRotation(const glm::vec3& radians) {
    rotation_ = radians;
    invalidateTransform();
}

void QVObject3D::setEulers(const glm::vec3& degrees) {
    setRotation({toRadians(degrees.x), toRadians(degrees.y), toRadians(degrees.z)});
}

glm::vec3 QVObject3D::eulers() const { return {rotationX(), rotationY(), rotationZ()}; }

const glm::mat4& QVObject3D::transform() {
    updateTransform();
    return transform_;
}

void QVObject3D::updateTransform() {
    if (!isTransformDirty_) return;
    glm::mat4 local = glm::scale(glm::translate(glm::mat4(1), position_), scale_);
    local = glm::rotate(local, rotation_.x, glm::vec3(1, 0, 0));
    local = glm::rotate(local, rotation_.y, glm::vec3(0, 1, 0));
    local = glm::rotate(local, rotation_.z, glm::vec3(0, 0, 1));
    transform_ = preposeMatrix4_ * mutableTransform_ * local * postMatrix4_;
    isTransformDirty_ = false;
}

void QVObject3D::setUpPreposeMatrix4(const glm::mat4& matrix) {
    preposeMatrix4_ = matrix;
    invalidateTransform();
}

void QVObject3D::setupMutableTransform(const glm::mat4& matrix) {
    mutableTransform_ = matrix;
    invalidateTransform();
}

void QVObject3D::setUpPostMatrix4(const glm::mat4& matrix) {
    postMatrix4_ = matrix;
    invalidateTransform();
}

}  // namespace multiscene
