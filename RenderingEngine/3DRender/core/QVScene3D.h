#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "core/QVObjectContainer3D.h"
#include "group/SceneCatalogue.h"
#include "platform/base/CMTime.h"
#include "playback/RenderDriver.h"
#include "tween/QVTween.h"

namespace multiscene {

class Painter;
class Playback;
class QVFrameBufferToTexture;
class QVSceneRenderToTexture;
class Texture;
class VideoTimeSource;

/// The root of one scene: its top-level nodes, camera, lights and clock. Not a node itself: top-level nodes
/// have no parent. Render queue only.
class QVScene3D : public std::enable_shared_from_this<QVScene3D> {
  public:
    using Children = QVObjectContainer3D::Children;

    /// An empty scene of the driver's size with the default 75-degree camera. The driver outlives the scene.
    static std::shared_ptr<QVScene3D> initRenderManager(RenderDriver& renderManager);
    ~QVScene3D();

    void addChild(const std::shared_ptr<QVObjectContainer3D>& child);
    void removeChild(QVObjectContainer3D& child);
    void removeAllChild();
    bool hasChild(const QVObjectContainer3D& child) const;
    std::shared_ptr<QVObjectContainer3D> getChildAt(size_t index) const;
    size_t numChildren() const { return children_.size(); }
    const Children& children() const { return children_; }
    /// After one of them has changed its depth; nothing when the scene does not hold `changed`.
    void sortChildren(const QVObjectContainer3D& changed);

    const std::shared_ptr<QVCamera3D>& camera() const { return camera_; }
    /// The camera is also a sorted top-level node; it replaces the former one.
    void setCamera(const std::shared_ptr<QVCamera3D>& camera);
    const QVObjectContainer3D::Lights& lightArray() const { return lightArray_; }
    void setLightArray(QVObjectContainer3D::Lights lights) { lightArray_ = std::move(lights); }

    // One frame, in this order; each passes what currentRenderTime() says. Between update and matrices the
    // scene's tweens are stepped.
    void updateData();
    void updateMatrix();
    void render(Painter& painter);
    /// Draws what its nodes render into textures, and nothing else.
    void renderTargets(Painter& painter);
    void renderComplete();
    QVTween& tweens() { return tweens_; }
    void dispose();

    float width() const { return width_; }    ///< pixels
    float height() const { return height_; }  ///< pixels
    float halfWidth() const { return width_ / 2; }
    float halfHeight() const { return height_ / 2; }
    float aspect() const { return width_ / height_; }
    RenderDriver& renderManager() const { return renderManager_; }
    Playback& playback() const { return renderManager_.playback(); }

    /// The scene's clock, also one of the children; null for a scene without one.
    const std::shared_ptr<VideoTimeSource>& timeSource() const { return timeSource_; }
    void setTimeSource(std::shared_ptr<VideoTimeSource> timeSource);
    /// The clock's last frame; without a clock the largest number.
    int64_t lastFrame() const;

    const SceneConfigData& sceneConfigData() const { return sceneConfigData_; }
    void setSceneConfigData(SceneConfigData data) { sceneConfigData_ = std::move(data); }
    const std::string& sceneIdentifier() const { return sceneIdentifier_; }
    void setSceneIdentifier(std::string identifier) { sceneIdentifier_ = std::move(identifier); }

    const platform::CMTime& currentRenderTime() const { return currentRenderTime_; }
    void setCurrentRenderTime(const platform::CMTime& time) { currentRenderTime_ = time; }

    /// Touch state of a host with a screen, in pixels; only stored here.
    bool isTouchDown() const { return isTouchDown_; }
    void setIsTouchDown(bool isTouchDown) { isTouchDown_ = isTouchDown; }
    const glm::vec2& touchDownPosition() const { return touchDownPosition_; }
    void setTouchDownPosition(const glm::vec2& position) { touchDownPosition_ = position; }

    /// Renders the whole scene into a texture for transitions; what that needs is made on first use.
    QVSceneRenderToTexture& renderToTextureObject() const { return *renderToTextureObject_; }

    /// Publishes a node's target; the scene keeps it until the scene ends.
    void setRenderToTexture(const std::string& key, std::shared_ptr<QVFrameBufferToTexture> target);
    /// What was drawn into the target published under the key; none when there is none.
    std::shared_ptr<Texture> renderToTextureMap(const std::string& key) const;

  private:
    explicit QVScene3D(RenderDriver& renderManager);
    Tick tick() const { return {.frame = currentRenderTime_.value, .isNew = isNewFrame_}; }

    RenderDriver& renderManager_;
    float width_, height_;
    Children children_;
    std::shared_ptr<QVCamera3D> camera_;
    QVObjectContainer3D::Lights lightArray_;
    std::shared_ptr<VideoTimeSource> timeSource_;
    SceneConfigData sceneConfigData_;
    std::string sceneIdentifier_;
    platform::CMTime currentRenderTime_;
    std::optional<int64_t> updatedFrame_;
    bool isNewFrame_ = true;
    QVTween tweens_;
    bool isTouchDown_ = false;
    glm::vec2 touchDownPosition_{0};
    std::unique_ptr<QVSceneRenderToTexture> renderToTextureObject_;
    std::map<std::string, std::shared_ptr<QVFrameBufferToTexture>> renderToTextureMap_;
};

}  // namespace multiscene
