#pragma once

#include <glm/glm.hpp>

#include "tween/TweenTarget.h"

namespace multiscene {

/// A local placement and appearance flags. The matrix is rebuilt on demand. Column-major, translation in
/// elements 12 to 14.
class QVObject3D : public TweenTarget {
  public:
    QVObject3D() = default;
    QVObject3D(const QVObject3D&) = delete;
    QVObject3D& operator=(const QVObject3D&) = delete;

    float x() const { return position_.x; }
    float y() const { return position_.y; }
    float z() const { return position_.z; }
    void setX(float x) override;
    void setY(float y) override;
    void setZ(float z) override;
    void setPosition(const glm::vec3& position);
    const glm::vec3& position() const { return position_; }

    float scaleX() const { return scale_.x; }
    float scaleY() const { return scale_.y; }
    float scaleZ() const { return scale_.z; }
    void setScaleX(float scale) override;
    void setScaleY(float scale) override;
    void setScaleZ(float scale) override;
    void setScale(const glm::vec3& scale);
    const glm::vec3& scale() const { return scale_; }

    /// Degrees in and out, radians kept.
    void setRotationX(float degrees) override;
    void setRotationY(float degrees) override;
    void setRotationZ(float degrees) override;
    float rotationX() const;
    float rotationY() const;
    float rotationZ() const;
    void setEulers(const glm::vec3& degrees);
    glm::vec3 eulers() const;
    /// Unlike the three axes above: radians in and out, unconverted.
    void setRotation(const glm::vec3& radians);
    const glm::vec3& rotation() const { return rotation_; }

    float alpha() const { return alpha_; }
    void setAlpha(float alpha) { alpha_ = alpha; }
    bool visible() const { return visible_; }
    void setVisible(bool visible) { visible_ = visible; }
    bool mouseEnabled() const { return mouseEnabled_; }
    void setMouseEnabled(bool enabled) { mouseEnabled_ = enabled; }

    /// prepose · mutable · T · S · Rx · Ry · Rz · post, rebuilt when dirty.
    const glm::mat4& transform();
    void updateTransform();
    virtual void invalidateTransform() { isTransformDirty_ = true; }

    void setUpPreposeMatrix4(const glm::mat4& matrix);
    void setupMutableTransform(const glm::mat4& matrix);
    void setUpPostMatrix4(const glm::mat4& matrix);
    const glm::mat4& preposeMatrix4() const { return preposeMatrix4_; }
    const glm::mat4& mutableTransform() const { return mutableTransform_; }
    const glm::mat4& postMatrix4() const { return postMatrix4_; }

  private:
    void set(float& field, float value);

    bool isTransformDirty_ = true;
    float alpha_ = 1;
    bool visible_ = true;
    bool mouseEnabled_ = true;
    glm::vec3 position_{0}, scale_{1}, rotation_{0};  // the rotation in radians
    glm::mat4 transform_{1}, preposeMatrix4_{1}, mutableTransform_{1}, postMatrix4_{1};
};

}  // namespace multiscene
