#pragma once

#include <memory>
#include <vector>

#include "animation/KeyFrames.h"
#include "core/QVObject3DTransformBase.h"
#include "core/carmera/QVCamera3DLookAtTransform.h"

namespace multiscene {

extern const KeyTable cameraKeys;
/// A key of "LookAtAnimation".
extern const KeyTable lookAtKeys;

/// Projection and view of a scene or a subtree: perspective with a horizontal field of view, or orthographic.
/// Its own placement (transform) plays no part; it moves by its "LookAtAnimation".
class QVCamera3D : public QVObject3DTransformBase {
  public:
    const char* className() const override {
        return isPerspectiveCamera3D_ ? "QVFrustumCamera" : "QVOrthCamera";
    }

    /// Distances before the eye, in model units, between which a camera of a scene file sees.
    static constexpr float defaultNear = 1, defaultFar = 2500, defaultOrthNear = -1000, defaultOrthFar = 2500;

    /// "QVOrthCamera" or "QVFrustumCamera"; any other type gives none. A camera without a usable aspect takes
    /// the scene's.
    static std::shared_ptr<QVCamera3D> cameraWithInfo(const platform::Value& info,
                                                      const std::shared_ptr<QVScene3D>& scene);
    /// Field of view in degrees, horizontal; aspect = width / height.
    static std::shared_ptr<QVCamera3D> initWithFov(float degrees, float aspect);
    static std::shared_ptr<QVCamera3D> initOrthWithWidth(float width, float aspect);

    void setFov(float degrees);
    float getFov() const { return fov_; }  ///< radians
    void setNear(float near);
    void setFar(float far);
    void setAspect(float aspect);
    void setOrthWidth(float width);
    void setOrthAspect(float aspect);
    void setOrthNear(float near);
    void setOrthFar(float far);
    void setPpCenter(const glm::vec2& center);  ///< kept; the projection does not use it
    bool isPerspectiveCamera3D() const { return isPerspectiveCamera3D_; }

    /// The projection, rebuilt first when dirty.
    const glm::mat4& getPpTransform();
    const glm::mat4& cameraLookAtTransform() const { return lookAt_.cameraLookAtTransform(); }
    const glm::vec3& viewpoint() const { return lookAt_.viewpoint(); }
    /// Grows whenever projection or view have changed: what was computed with them is kept as long as it
    /// stays.
    uint64_t version() const { return version_; }
    /// Rebuilds the projection when it is dirty.
    void updatePPTransform();

    void rendInfoWithDic(const platform::Value& info) override;
    void updateMatrix() override;
    QVCamera3DLookAtTransform& lookAtTransform() { return lookAt_; }

  protected:
    bool isUpdatedAt(int64_t) const override { return true; }
    /// Plays the look-at animation only: a camera's motion items are read but never played.
    void updateDue(const Tick& tick) override;

  private:
    /// One channel of a key: what its value does.
    struct LookAtMove {
        void (*apply)(QVCamera3DLookAtTransform&, const glm::vec3& value);
        Move<glm::vec3> move;
    };
    static std::vector<LookAtMove> lookAtMovesOf(const platform::Value& key);

    void invalidatePPTransform() { isPPTransformDirty_ = true; }
    void setProjection(float& field, float value);
    glm::mat4 perspective() const;
    glm::mat4 orthographic() const;

    float fov_ = 0, near_ = defaultNear, far_ = defaultFar, aspect_ = 1;
    float OrthWidth_ = 2, OrthAspect_ = 1, OrthNear_ = defaultOrthNear, OrthFar_ = defaultOrthFar;
    bool isPerspectiveCamera3D_ = true;
    glm::vec2 ppCenter_{0};
    glm::mat4 ppTransform_{1};
    bool isPPTransformDirty_ = true;
    uint64_t version_ = 0;
    QVCamera3DLookAtTransform lookAt_;
    KeyFrames<std::vector<LookAtMove>> lookAtAnimation_;
};

}  // namespace multiscene
