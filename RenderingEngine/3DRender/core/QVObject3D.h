#pragma once

#include <glm/glm.hpp>

#include "tween/TweenTarget.h"

namespace multiscene {

/// A local placement and appearance flags. Scalars are kept in the units below; the matrix is rebuilt on
/// demand. Column-major, translation in elements 12 to 14.
class QVObject3D : public TweenTarget {
  public:
    QVObject3D() = default;
    QVObject3D(const QVObject3D&) = delete;
    QVObject3D& operator=(const QVObject3D&) = delete;

    float x() const { return x_; }
    float y() const { return y_; }
    float z() const { return z_; }
    void setX(float x) override;
    void setY(float y) override;
    void setZ(float z) override;
    void setPosition(const glm::vec3& position);
    const glm::vec3& position();

    float scaleX() const { return scaleX_; }
    float scaleY() const { return scaleY_; }
    float scaleZ() const { return scaleZ_; }
    void setScaleX(float scale) override;
    void setScaleY(float scale) override;
    void setScaleZ(float scale) override;
    void setScale(const glm::vec3& scale);
    const glm::vec3& scale();

    /// Degrees in and out, radians kept.
    void setRotationX(float degrees) override;
    void setRotationY(float degrees) override;
    void setRotationZ(float degrees) override;
    float rotationX() const;
    float rotationY() const;
    float rotationZ() const;
    void setEulers(const glm::vec3& degrees);
    const glm::vec3& eulers();
    /// Unlike the three axes above: radians in and out, unconverted.
    void setRotation(const glm::vec3& radians);
    const glm::vec3& rotation();

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
    bool isTransformDirty() const { return isTransformDirty_; }

    void setUpPreposeMatrix4(const glm::mat4& matrix);
    void setupMutableTransform(const glm::mat4& matrix);
    void setUpPostMatrix4(const glm::mat4& matrix);
    const glm::mat4& preposeMatrix4() const { return preposeMatrix4_; }
    const glm::mat4& mutableTransform() const { return mutableTransform_; }
    const glm::mat4& postMatrix4() const { return postMatrix4_; }

  private:
    void set(float& field, float value);
    void refreshSnapshots();

    bool isTransformDirty_ = true;
    float alpha_ = 1;
    bool visible_ = true;
    bool mouseEnabled_ = true;
    float x_ = 0, y_ = 0, z_ = 0;
    float rotationX_ = 0, rotationY_ = 0, rotationZ_ = 0;  // radians
    float scaleX_ = 1, scaleY_ = 1, scaleZ_ = 1;
    glm::vec3 position_{0}, scale_{1}, rotation_{0}, eulers_{0};
    glm::mat4 transform_{1}, preposeMatrix4_{1}, mutableTransform_{1}, postMatrix4_{1};
};

}  // namespace multiscene
