#include "core/QVObject3D.h"

#include <glm/gtc/matrix_transform.hpp>

#include "core/Angles.h"

namespace multiscene {

void QVObject3D::set(float& field, float value) {
    field = value;
    invalidateTransform();
}

void QVObject3D::setX(float x) { set(x_, x); }
void QVObject3D::setY(float y) { set(y_, y); }
void QVObject3D::setZ(float z) { set(z_, z); }
void QVObject3D::setScaleX(float scale) { set(scaleX_, scale); }
void QVObject3D::setScaleY(float scale) { set(scaleY_, scale); }
void QVObject3D::setScaleZ(float scale) { set(scaleZ_, scale); }
void QVObject3D::setRotationX(float degrees) { set(rotationX_, toRadians(degrees)); }
void QVObject3D::setRotationY(float degrees) { set(rotationY_, toRadians(degrees)); }
void QVObject3D::setRotationZ(float degrees) { set(rotationZ_, toRadians(degrees)); }
float QVObject3D::rotationX() const { return toDegrees(rotationX_); }
float QVObject3D::rotationY() const { return toDegrees(rotationY_); }
float QVObject3D::rotationZ() const { return toDegrees(rotationZ_); }

void QVObject3D::setPosition(const glm::vec3& position) {
    x_ = position.x;
    y_ = position.y;
    z_ = position.z;
    invalidateTransform();
}

void QVObject3D::setScale(const glm::vec3& scale) {
    scaleX_ = scale.x;
    scaleY_ = scale.y;
    scaleZ_ = scale.z;
    invalidateTransform();
}

void QVObject3D::setRotation(const glm::vec3& radians) {
    rotationX_ = radians.x;
    rotationY_ = radians.y;
    rotationZ_ = radians.z;
    invalidateTransform();
}

void QVObject3D::setEulers(const glm::vec3& degrees) {
    setRotation({toRadians(degrees.x), toRadians(degrees.y), toRadians(degrees.z)});
}

const glm::vec3& QVObject3D::eulers() {
    eulers_ = {rotationX(), rotationY(), rotationZ()};
    return eulers_;
}

const glm::vec3& QVObject3D::position() {
    if (isTransformDirty_) refreshSnapshots();
    return position_;
}

const glm::vec3& QVObject3D::scale() {
    if (isTransformDirty_) refreshSnapshots();
    return scale_;
}

const glm::vec3& QVObject3D::rotation() {
    if (isTransformDirty_) refreshSnapshots();
    return rotation_;
}

void QVObject3D::refreshSnapshots() {
    position_ = {x_, y_, z_};
    rotation_ = {rotationX_, rotationY_, rotationZ_};
    scale_ = {scaleX_, scaleY_, scaleZ_};
}

const glm::mat4& QVObject3D::transform() {
    updateTransform();
    return transform_;
}

void QVObject3D::updateTransform() {
    if (!isTransformDirty_) return;
    refreshSnapshots();
    glm::mat4 local = glm::scale(glm::translate(glm::mat4(1), position_), scale_);
    local = glm::rotate(local, rotationX_, glm::vec3(1, 0, 0));
    local = glm::rotate(local, rotationY_, glm::vec3(0, 1, 0));
    local = glm::rotate(local, rotationZ_, glm::vec3(0, 0, 1));
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
