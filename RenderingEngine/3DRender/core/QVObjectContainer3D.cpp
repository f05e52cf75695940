#include "core/QVObjectContainer3D.h"

#include <algorithm>

#include "core/QVLightBase.h"
#include "core/QVScene3D.h"
#include "core/carmera/QVCamera3D.h"
#include "core/component/QVObject3DComponentBase.h"
#include "platform/base/Error.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key containerKeyList[] = {
    {.name = "type", .type = KeyType::Text, .meaning = "the node's class", .required = true},
    {.name = "name", .type = KeyType::Text, .meaning = "shown in messages and traces"},
    {.name = "ComponentsInfo",
     .type = KeyType::Array,
     .meaning = "behaviours, as sound effects",
     .children = &componentKeys},
    {.name = "CameraInfo",
     .type = KeyType::Dictionary,
     .meaning = "a camera for this node and all below it",
     .children = &cameraKeys},
    {.name = "LightSourceArray",
     .type = KeyType::Array,
     .meaning = "lights instead of the scene's",
     .children = &lightKeys},
};
const KeyTable containerKeys{"QVObjectContainer3D", "What every node reads.", nullptr, containerKeyList};

QVObjectContainer3D::QVObjectContainer3D() = default;
QVObjectContainer3D::~QVObjectContainer3D() = default;

// Tree

void QVObjectContainer3D::addChild(const std::shared_ptr<QVObjectContainer3D>& child) {
    insertByDepth(children_, child);
    if (const auto oldParent = child->parent()) {
        oldParent->removeChild(*child);
        child->setScene(nullptr);
    }
    child->parent_ = weak_from_this();
    child->hasParent_ = true;
    child->setScene(scene());
    child->invalidateSceneTransform();
    if (camera_ && !child->camera_) child->setCamera(camera_);
}

void QVObjectContainer3D::removeChild(QVObjectContainer3D& child) {
    const auto keepAlive = child.shared_from_this();
    std::erase(children_, keepAlive);
    child.parent_.reset();
    child.hasParent_ = false;
    child.setScene(nullptr);
    child.invalidateSceneTransform();
}

bool QVObjectContainer3D::hasChild(const QVObjectContainer3D& child) const {
    return std::any_of(children_.begin(), children_.end(),
                       [&](const auto& node) { return node.get() == &child; });
}

std::shared_ptr<QVObjectContainer3D> QVObjectContainer3D::getChildAt(size_t index) const {
    return index < children_.size() ? children_[index] : nullptr;
}

void QVObjectContainer3D::setParent(const std::shared_ptr<QVObjectContainer3D>& newParent) {
    if (newParent)
        if (const auto oldParent = parent()) oldParent->removeChild(*this);
    parent_ = newParent;
    hasParent_ = newParent != nullptr;
    invalidateSceneTransform();
}

Playback* QVObjectContainer3D::playback() const {
    const auto owner = scene();
    return owner ? &owner->playback() : nullptr;
}

const QVMultiSceneRenderShareSettings& QVObjectContainer3D::settings() const {
    Playback* const played = playback();
    return played ? played->settings() : QVMultiSceneRenderShareSettings::none();
}

void QVObjectContainer3D::setScene(const std::shared_ptr<QVScene3D>& newScene) {
    if (scene() == newScene) return;
    scene_ = newScene;
    livingScene_ = newScene.get();
    for (const auto& child : children_) child->setScene(newScene);
    invalidateSceneTransform();
}

void QVObjectContainer3D::dispose() {
    for (const auto& child : children_) child->dispose();
}

// Camera and lights

void QVObjectContainer3D::setCamera(const std::shared_ptr<QVCamera3D>& camera) {
    camera_ = camera;
    if (camera_) camera_->updateMatrix();
    isprojTransformDirty_ = true;
    for (const auto& child : children_) child->setCamera(camera);
}

const QVObjectContainer3D::Lights& QVObjectContainer3D::ligthArray() const {
    static const Lights none;
    if (!ligthArray_.empty()) return ligthArray_;
    const auto owner = scene();
    return owner ? owner->lightArray() : none;
}

// Matrices

const glm::mat4& QVObjectContainer3D::sceneTransform() {
    updateSceneTransform();
    return sceneTransform_;
}

void QVObjectContainer3D::updateSceneTransform() {
    if (!isSceneTransformDirty_) return;
    const auto owner = parent();
    if (!hasParent_)
        sceneTransform_ = transform();
    else
        sceneTransform_ = (owner ? owner->sceneTransform() : glm::mat4(0)) * transform();
    isSceneTransformDirty_ = false;
}

float QVObjectContainer3D::sceneAlpha() const {
    const auto owner = parent();
    return owner ? alpha() * owner->sceneAlpha() : alpha();
}

const glm::mat4& QVObjectContainer3D::projTransform() {
    updateProjTransform();
    return projTransform_;
}

glm::mat4 QVObjectContainer3D::modelViewTransform() { return modelViewWith(view()); }

QVCamera3D* QVObjectContainer3D::view() const {
    if (camera_) return camera_.get();
    return scene_.expired() ? nullptr : livingScene_->camera().get();
}

glm::mat4 QVObjectContainer3D::modelViewWith(const QVCamera3D* view) {
    return view ? view->cameraLookAtTransform() * sceneTransform() : glm::mat4(0);
}

void QVObjectContainer3D::updateProjTransform() {
    QVCamera3D* const camera = view();
    if (camera) camera->updatePPTransform();
    const uint64_t version = camera ? camera->version() : 0;
    if (!isprojTransformDirty_ && camera == projectedBy_ && version == projectedVersion_) return;
    projTransform_ = camera ? camera->getPpTransform() * modelViewWith(camera) : glm::mat4(0);
    projectedBy_ = camera;
    projectedVersion_ = version;
    isprojTransformDirty_ = false;
}

void QVObjectContainer3D::invalidateSceneTransform() {
    if (isSceneTransformDirty_) return;  // then the whole subtree is dirty already
    isSceneTransformDirty_ = isprojTransformDirty_ = true;
    for (const auto& child : children_) child->invalidateSceneTransform();
}

void QVObjectContainer3D::invalidateTransform() {
    QVObject3D::invalidateTransform();
    invalidateSceneTransform();
}

// Frame

void QVObjectContainer3D::updateMatrix() {
    if (camera_) camera_->updateMatrix();
    isTouching_ = false;
    updateTransform();
    updateSceneTransform();
    updateProjTransform();
    for (const auto& child : children_) child->updateMatrix();
}

void QVObjectContainer3D::updateData(const Tick& tick) {
    if (isUpdatedAt(tick.frame)) updateDue(tick);
}

void QVObjectContainer3D::updateDue(const Tick& tick) {
    if (camera_) camera_->updateData(tick);
    for (const auto& light : ligthArray_) light->updateData(tick.frame);
    for (const auto& component : components_) component->updateData(tick);
    for (const auto& child : children_) child->updateData(tick);
}

void QVObjectContainer3D::renderSelfAndChildrens(Painter& painter, const Tick& tick) {
    if (!visible()) return;
    if (camera_) camera_->renderSelfAndChildrens(painter, tick);
    renderingBeforeConfig(painter, tick);
    render(painter, tick);
    for (const auto& child : children_) child->renderSelfAndChildrens(painter, tick);
    renderingAfterConfig(painter, tick);
}

// The brackets set the state that targets below are drawn with.
void QVObjectContainer3D::renderTargets(Painter& painter, const Tick& tick) {
    if (!visible()) return;
    renderingBeforeConfig(painter, tick);
    for (const auto& child : children_) child->renderTargets(painter, tick);
    renderingAfterConfig(painter, tick);
}

void QVObjectContainer3D::renderComplete(const Tick& tick) {
    if (isCompletedAt(tick.frame)) completeDue(tick);
}

void QVObjectContainer3D::completeDue(const Tick& tick) {
    if (camera_) camera_->renderComplete(tick);
    for (const auto& component : components_) component->renderComplete(tick);
    for (const auto& child : children_) child->renderComplete(tick);
    removeFinished(children_);
}

// Depth order and removal

namespace {

bool isDrawnBefore(const std::shared_ptr<QVObjectContainer3D>& first,
                   const std::shared_ptr<QVObjectContainer3D>& second) {
    return first->renderDepth() > second->renderDepth();
}

}  // namespace

void QVObjectContainer3D::setRenderDepth(float depth) {
    if (depth == renderDepth_) return;
    renderDepth_ = depth;
    if (const auto owner = parent())
        sortIfHeld(owner->children_);
    else if (const auto owningScene = scene())
        owningScene->sortChildren(*this);
}

// A node that is being configured knows its scene before the scene holds it.
void QVObjectContainer3D::sortIfHeld(Children& nodes) const {
    const bool isHeld =
        std::any_of(nodes.begin(), nodes.end(), [this](const auto& node) { return node.get() == this; });
    if (isHeld) renderDepthSortWithArray(nodes);
}

void QVObjectContainer3D::renderDepthSortWithArray(Children& nodes) {
    std::stable_sort(nodes.begin(), nodes.end(), isDrawnBefore);
}

void QVObjectContainer3D::insertByDepth(Children& nodes, const std::shared_ptr<QVObjectContainer3D>& node) {
    nodes.insert(std::upper_bound(nodes.begin(), nodes.end(), node, isDrawnBefore), node);
}

namespace {

void killTweensBelow(QVTween& tweens, const QVObjectContainer3D& node) {
    tweens.killAllTweenOf(node);
    for (const auto& child : node.children()) killTweensBelow(tweens, *child);
}

}  // namespace

void QVObjectContainer3D::removeFinished(Children& nodes) {
    std::erase_if(nodes, [](const std::shared_ptr<QVObjectContainer3D>& node) {
        if (!node->isRenderFinishNeedRemove_) return false;
        if (const auto owner = node->scene()) killTweensBelow(owner->tweens(), *node);
        node->parent_.reset();
        node->hasParent_ = false;
        node->setScene(nullptr);
        node->invalidateSceneTransform();
        return true;
    });
}

// Configuration

void QVObjectContainer3D::rendInfoWithDic(const platform::Value& info) {
    const KeyReader reader(containerKeys, info);
    name_ = reader.text("name");
    for (const platform::Value& entry : reader.array("ComponentsInfo")) {
        const std::string type = entry.string("type");
        const auto* known = ComponentTypes::find(type);
        if (!known)
            throw platform::Error(platform::ErrorKind::Template, "unknown component type \"" + type + "\"",
                                  {}, "ComponentsInfo");
        const auto component = known->make();
        component->setObject3D(this);
        component->rendInfoWithDic(entry);
        components_.push_back(component);
    }
    if (reader.has("CameraInfo"))
        if (const auto camera = QVCamera3D::cameraWithInfo(reader.value("CameraInfo"), scene()))
            setCamera(camera);
    if (reader.has("LightSourceArray"))
        setLigthArray(QVLightBase::lightSourceArrayWithInfo(reader.value("LightSourceArray")));
}

BezierSample QVObjectContainer3D::bezierResultWithTime(float, const std::string&) const { return {}; }

// Trace

namespace {

platform::Value numbers(const float* values, int count) {
    platform::Value::Array list;
    for (int i = 0; i < count; ++i) list.emplace_back(static_cast<double>(values[i]));
    return platform::Value(std::move(list));
}

}  // namespace

void QVObjectContainer3D::addTraceFields(platform::Value::Dictionary& fields) {
    const glm::vec3 degrees = eulers();
    fields["type"] = platform::Value(className());
    if (!name_.empty()) fields["name"] = platform::Value(name_);
    if (!keyPath_.empty()) fields["key"] = platform::Value(keyPath_);
    fields["visible"] = platform::Value(visible());
    fields["renderDepth"] = platform::Value(static_cast<double>(renderDepth_));
    fields["alpha"] = platform::Value(static_cast<double>(alpha()));
    fields["sceneAlpha"] = platform::Value(static_cast<double>(sceneAlpha()));
    fields["position"] = numbers(&position().x, 3);
    fields["rotation"] = numbers(&degrees.x, 3);
    fields["scale"] = numbers(&scale().x, 3);
    fields["transform"] = numbers(&transform()[0][0], 16);
    fields["sceneTransform"] = numbers(&sceneTransform_[0][0], 16);
    fields["projTransform"] = numbers(&projTransform_[0][0], 16);
}

}  // namespace multiscene
