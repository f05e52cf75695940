#include "core/QVScene3D.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "core/GLESUtils/QVFrameBufferToTexture.h"
#include "core/QVLightBase.h"
#include "core/QVObject3DFpsBase.h"
#include "core/QVSceneRenderToTexture.h"
#include "core/carmera/QVCamera3D.h"
#include "playback/VideoTimeSource.h"

namespace multiscene {

namespace {
constexpr float defaultFov = 75;  // degrees
}

std::shared_ptr<QVScene3D> QVScene3D::initRenderManager(RenderDriver& renderManager) {
    std::shared_ptr<QVScene3D> scene(new QVScene3D(renderManager));
    scene->setCamera(QVCamera3D::initWithFov(defaultFov, scene->aspect()));
    scene->renderToTextureObject_ = std::make_unique<QVSceneRenderToTexture>(*scene);
    return scene;
}

QVScene3D::QVScene3D(RenderDriver& renderManager)
    : renderManager_(renderManager),
      width_(static_cast<float>(renderManager.bufferWidth())),
      height_(static_cast<float>(renderManager.bufferHeight())) {}

QVScene3D::~QVScene3D() = default;

void QVScene3D::addChild(const std::shared_ptr<QVObjectContainer3D>& child) {
    QVObjectContainer3D::insertByDepth(children_, child);
    if (const auto oldParent = child->parent()) {
        oldParent->removeChild(*child);
        child->setScene(nullptr);
    }
    child->setParent(nullptr);
    child->setScene(shared_from_this());
    child->invalidateSceneTransform();
}

void QVScene3D::removeChild(QVObjectContainer3D& child) {
    const auto keepAlive = child.shared_from_this();
    std::erase(children_, keepAlive);
    child.setParent(nullptr);
    child.invalidateSceneTransform();
}

void QVScene3D::removeAllChild() {
    for (const auto& child : std::exchange(children_, {})) {
        child->setParent(nullptr);
        child->invalidateSceneTransform();
    }
}

bool QVScene3D::hasChild(const QVObjectContainer3D& child) const {
    return std::any_of(children_.begin(), children_.end(),
                       [&](const auto& node) { return node.get() == &child; });
}

std::shared_ptr<QVObjectContainer3D> QVScene3D::getChildAt(size_t index) const {
    return index < children_.size() ? children_[index] : nullptr;
}

void QVScene3D::sortChildren(const QVObjectContainer3D& changed) { changed.sortIfHeld(children_); }

void QVScene3D::setCamera(const std::shared_ptr<QVCamera3D>& camera) {
    if (camera_) removeChild(*camera_);
    addChild(camera);
    camera->setScene(shared_from_this());
    camera_ = camera;
    for (const auto& child : children_) child->invalidateSceneTransform();
}

void QVScene3D::setTimeSource(std::shared_ptr<VideoTimeSource> timeSource) {
    timeSource_ = std::move(timeSource);
}

int64_t QVScene3D::lastFrame() const {
    const auto clock =
        timeSource_ ? std::dynamic_pointer_cast<QVObject3DFpsBase>(timeSource_->node()) : nullptr;
    return clock ? clock->endFps() : std::numeric_limits<int64_t>::max();
}

void QVScene3D::updateMatrix() {
    if (camera_) camera_->updateMatrix();
    for (const auto& child : children_) child->updateMatrix();
}

void QVScene3D::updateData() {
    isNewFrame_ = updatedFrame_ != currentRenderTime_.value;
    updatedFrame_ = currentRenderTime_.value;
    if (camera_) camera_->updateData(tick());
    for (const auto& light : lightArray_) light->updateData(tick().frame);
    for (const auto& child : children_) child->updateData(tick());
}

void QVScene3D::render(Painter& painter) {
    if (camera_) camera_->renderSelfAndChildrens(painter, tick());
    for (const auto& child : children_) child->renderSelfAndChildrens(painter, tick());
}

void QVScene3D::renderTargets(Painter& painter) {
    if (renderToTextureMap_.empty()) return;
    for (const auto& child : children_) child->renderTargets(painter, tick());
}

void QVScene3D::renderComplete() {
    if (camera_) camera_->renderComplete(tick());
    for (const auto& child : children_) child->renderComplete(tick());
    QVObjectContainer3D::removeFinished(children_);
}

void QVScene3D::dispose() {
    for (const auto& child : children_) child->dispose();
}

void QVScene3D::setRenderToTexture(const std::string& key, std::shared_ptr<QVFrameBufferToTexture> target) {
    renderToTextureMap_.insert_or_assign(key, std::move(target));
}

std::shared_ptr<Texture> QVScene3D::renderToTextureMap(const std::string& key) const {
    const auto found = renderToTextureMap_.find(key);
    return found == renderToTextureMap_.end() ? nullptr : found->second->texture();
}

}  // namespace multiscene
