#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/QVObject3D.h"
#include "format/KeyTable.h"
#include "platform/base/Value.h"
#include "playback/Tick.h"

namespace multiscene {

class Painter;
class Playback;
class QVCamera3D;
class QVLightBase;
class QVMultiSceneRenderShareSettings;
class QVObject3DComponentBase;
class QVScene3D;

extern const KeyTable containerKeys;

/// A node of the scene graph: links, cached matrices and the per-frame traversals.
///
/// Life-cycle contract, for every node, on the render queue:
///   configure  rendInfoWithDic, once, base class first; programs of the template's are asked for here
///   update     updateData: key frames and materials; may load and drop textures
///   matrices   updateMatrix: after all tweens have been stepped
///   draw       renderSelfAndChildrens: renderingBeforeConfig, renderSelf, the children, then
///              renderingAfterConfig; tells the painter what is to be drawn and changes no node
///   complete   renderComplete: after the frame was handed over; nodes whose time is up are dropped here
///   dispose    before the scene is thrown away
/// A parent owns its children; parent and scene are referred to weakly.
class QVObjectContainer3D : public QVObject3D, public std::enable_shared_from_this<QVObjectContainer3D> {
  public:
    using Children = std::vector<std::shared_ptr<QVObjectContainer3D>>;
    using Lights = std::vector<std::shared_ptr<QVLightBase>>;

    QVObjectContainer3D();
    ~QVObjectContainer3D() override;

    /// The type, as scene files name it.
    virtual const char* className() const = 0;
    /// An optional name from the dictionary, for people: messages and traces show it.
    const std::string& name() const { return name_; }
    /// Where its dictionary stands in the scene file, "object3D[2].childNode[0]"; empty: in none.
    const std::string& keyPath() const { return keyPath_; }
    void setKeyPath(std::string keyPath) { keyPath_ = std::move(keyPath); }

    // Tree
    /// Appends and sorts by depth, then takes the node from its old parent. Adding a node to the parent that
    /// it already has takes it out of the children: the removal comes last and takes every occurrence.
    void addChild(const std::shared_ptr<QVObjectContainer3D>& child);
    void removeChild(QVObjectContainer3D& child);
    bool hasChild(const QVObjectContainer3D& child) const;
    std::shared_ptr<QVObjectContainer3D> getChildAt(size_t index) const;
    size_t numChildren() const { return children_.size(); }
    const Children& children() const { return children_; }
    std::shared_ptr<QVObjectContainer3D> parent() const { return parent_.lock(); }
    /// Takes the node from its current parent first, unless `parent` is empty.
    void setParent(const std::shared_ptr<QVObjectContainer3D>& parent);
    std::shared_ptr<QVScene3D> scene() const { return scene_.lock(); }
    /// Of the scene; none outside of one.
    Playback* playback() const;
    /// The user's values and the macros of paths; outside a scene those of nobody.
    const QVMultiSceneRenderShareSettings& settings() const;
    /// Passes the scene on to the whole subtree.
    void setScene(const std::shared_ptr<QVScene3D>& scene);
    virtual void dispose();

    // Camera and lights
    const std::shared_ptr<QVCamera3D>& camera() const { return camera_; }
    /// The camera of the whole subtree, instead of the scene's.
    void setCamera(const std::shared_ptr<QVCamera3D>& camera);
    /// The node's own lights, else the scene's.
    const Lights& ligthArray() const;
    void setLigthArray(Lights lights) { ligthArray_ = std::move(lights); }
    bool isLightEnable() const { return isLightEnable_; }
    void setIsLightEnable(bool enabled) { isLightEnable_ = enabled; }

    // Matrices. World and projection are kept until the node, one above it or the camera moves; what follows
    // from them is computed when it is asked for.
    const glm::mat4& sceneTransform();
    /// Zero without a camera.
    const glm::mat4& projTransform();
    glm::mat4 inverseSceneTransform() { return glm::inverse(sceneTransform()); }
    glm::mat4 inverseProjTransform() { return glm::inverse(projTransform()); }
    glm::mat4 modelViewTransform();
    glm::mat3 normTransform() { return glm::transpose(glm::inverse(glm::mat3(modelViewTransform()))); }
    glm::vec3 scenePosition() { return glm::vec3(sceneTransform()[3]); }
    glm::vec4 projectPosition() { return sceneTransform()[3]; }
    float sceneAlpha() const;
    void updateSceneTransform();
    void updateProjTransform();
    void invalidateSceneTransform();
    void invalidateTransform() override;

    // Frame
    virtual void updateMatrix();
    /// updateDue() when isUpdatedAt().
    void updateData(const Tick& tick);
    void renderSelfAndChildrens(Painter& painter, const Tick& tick);
    /// The part of it that draws into render targets: all that later frames can show of this one.
    virtual void renderTargets(Painter& painter, const Tick& tick);
    virtual void renderingBeforeConfig(Painter&, const Tick&) {}
    virtual void render(Painter&, const Tick&) {}
    virtual void renderingAfterConfig(Painter&, const Tick&) {}
    /// completeDue() when isCompletedAt().
    void renderComplete(const Tick& tick);

    // Depth order
    float renderDepth() const { return renderDepth_; }
    /// Larger is further back and drawn first; re-sorts the list that holds the node.
    void setRenderDepth(float depth);
    /// Larger depth first; equal depths keep their order.
    static void renderDepthSortWithArray(Children& nodes);
    /// Where appending and sorting would bring the node; `nodes` are sorted.
    static void insertByDepth(Children& nodes, const std::shared_ptr<QVObjectContainer3D>& node);
    /// Sorts `nodes` if this node is one of them.
    void sortIfHeld(Children& nodes) const;

    /// Asks the parent to drop the node when it completes the frame.
    bool isRenderFinishNeedRemove() const { return isRenderFinishNeedRemove_; }
    void setIsRenderFinishNeedRemove(bool remove) { isRenderFinishNeedRemove_ = remove; }
    /// Removes the flagged nodes of a list, their whole subtrees with their tweens.
    static void removeFinished(Children& nodes);

    // Stored for scene code; nothing here tests hits or casts shadows.
    bool isTouching() const { return isTouching_; }
    void setIsTouching(bool touching) { isTouching_ = touching; }  ///< until the next updateMatrix
    bool isTouchDown() const { return isTouchDown_; }
    void setIsTouchDown(bool down) { isTouchDown_ = down; }
    const glm::vec2& touchDownPosition() const { return touchDownPosition_; }
    void setTouchDownPosition(const glm::vec2& position) { touchDownPosition_ = position; }
    bool isHitTestRect() const { return isHitTestRect_; }
    void setIsHitTestRect(bool isRect) { isHitTestRect_ = isRect; }
    const glm::vec4& hitTestRect() const { return hitTestRect_; }  ///< x, y, width, height
    void setHitTestRect(const glm::vec4& rect) { hitTestRect_ = rect; }
    float hitTestCircleRadius() const { return hitTestCircleRadius_; }
    void setHitTestCircleRadius(float radius) { hitTestCircleRadius_ = radius; }
    bool isCastShadow() const { return isCastShadow_; }
    void setIsCastShadow(bool cast) { isCastShadow_ = cast; }

    // Components, owned
    using Components = std::vector<std::shared_ptr<QVObject3DComponentBase>>;
    const Components& components() const { return components_; }

    /// Reads the node's dictionary; every class calls its base first.
    virtual void rendInfoWithDic(const platform::Value& info);

    // TweenTarget
    BezierSample bezierResultWithTime(float time, const std::string& bezierIdentifier) const override;

    /// Adds what a trace line shows of this node.
    virtual void addTraceFields(platform::Value::Dictionary& fields);

  protected:
    /// Whether the node and all below it take part in a frame's update, and in its completion.
    virtual bool isUpdatedAt(int64_t /*frame*/) const { return visible(); }
    virtual bool isCompletedAt(int64_t /*frame*/) const { return visible(); }
    /// One frame's work; a class calls its base.
    virtual void updateDue(const Tick& tick);
    virtual void completeDue(const Tick& tick);

  private:
    QVCamera3D* view() const;
    glm::mat4 modelViewWith(const QVCamera3D* view);

    std::string name_, keyPath_;
    // A dirty world matrix goes with a dirty projection, and with dirty ones in the whole subtree.
    bool isSceneTransformDirty_ = true, isprojTransformDirty_ = true;
    bool isTouching_ = false, isTouchDown_ = false, isHitTestRect_ = false;
    glm::vec2 touchDownPosition_{0};
    glm::vec4 hitTestRect_{0};
    float hitTestCircleRadius_ = 0;
    bool isCastShadow_ = true, isLightEnable_ = false, isRenderFinishNeedRemove_ = false;
    float renderDepth_ = 0;
    Children children_;
    std::weak_ptr<QVObjectContainer3D> parent_;
    bool hasParent_ = false;  // stays true when the parent has gone away
    std::weak_ptr<QVScene3D> scene_;
    QVScene3D* livingScene_ =
        nullptr;  // the same while that lives; asked in each frame, so nothing is counted
    std::shared_ptr<QVCamera3D> camera_;
    Lights ligthArray_;
    Components components_;
    glm::mat4 sceneTransform_{1}, projTransform_{1};
    const QVCamera3D* projectedBy_ = nullptr;  // compared only
    uint64_t projectedVersion_ = 0;            // of that camera
};

}  // namespace multiscene
