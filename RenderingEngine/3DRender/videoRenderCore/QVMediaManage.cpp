#include "videoRenderCore/QVMediaManage.h"

#include "core/ExpectedPictures.h"
#include "core/Material/SceneTextures.h"
#include "core/QVLightBase.h"
#include "core/SceneNodes.h"
#include "core/carmera/QVCamera3D.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

namespace {

constexpr float placeholderWidth = 2, placeholderAspect = 1.3333f;

/// Stops a scene's clock and motion. Its nodes go with the scene, or at once.
void cleanUp(const std::shared_ptr<QVScene3D>& scene, bool removesChildren) {
    if (!scene) return;
    if (const auto timeSource = scene->timeSource()) timeSource->cancelDecode();
    scene->tweens().killAllTween();
    if (!removesChildren) return;
    scene->dispose();
    scene->removeAllChild();
}

void reportUnreadable(const SceneGroup::Scene& scene, RenderReport& report) {
    const std::string& file = scene.record.scenePlistPath;
    report.add({.what = scene.fault->message(), .name = file, .scene = file, .node = {}});
}

}  // namespace

std::shared_ptr<QVMediaManage> QVMediaManage::initWithRenderManager(
    std::shared_ptr<QVMultiSceneRenderManager> renderManager, bool isLoopPlayer) {
    return std::shared_ptr<QVMediaManage>(new QVMediaManage(std::move(renderManager), isLoopPlayer));
}

QVMediaManage::QVMediaManage(std::shared_ptr<QVMultiSceneRenderManager> renderManager, bool isLoopPlayer)
    : renderManager_(std::move(renderManager)), isLoopPlayer_(isLoopPlayer) {
    renderManager_->performOnRenderQueue([this] {
        if (const auto placeholder = renderManager_->currentScene())
            placeholder->setCamera(QVCamera3D::initOrthWithWidth(placeholderWidth, placeholderAspect));
    });
}

// --- loading -------------------------------------------------------------------------------------------

void QVMediaManage::loadSceneGroup(SceneGroup group) {
    renderManager_->performOnRenderQueue([&] {
        takeGroup(std::move(group));
        loadFirstScene();
    });
    renderManager_->stratRun();
}

void QVMediaManage::takeGroup(SceneGroup group) {
    group_ = std::move(group);
    renderManager_->setSceneTexturesLast(outlastTheirTurn(group_));
    renderManager_->playback().settings().setUserMediaMapDic(group_.userMediaMap);
}

void QVMediaManage::loadFirstScene() {
    currentSceneIndex_ = -1;
    renderManager_->setupScene();
    loadNextScene(renderManager_->currentScene());
}

bool QVMediaManage::loadNextScene(const std::shared_ptr<QVScene3D>& scene) {
    ++currentSceneIndex_;
    if (groupHasEnded()) {
        if (!isLoopPlayer_ || group_.entries.empty()) return false;
        currentSceneIndex_ = 0;
    }
    const KeyReader entry(sceneEntryKeys, group_.entries[static_cast<size_t>(currentSceneIndex_)]);
    loadSceneWithSceneId(entry.integer("mainSceneId"), scene, entry.text("sceneIdentifier"),
                         entry.value("sceneTansitionsInfo"));
    return true;
}

void QVMediaManage::loadSceneWithSceneId(int64_t sceneId, const std::shared_ptr<QVScene3D>& scene,
                                         const std::string& sceneIdentifier,
                                         const platform::Value& sceneTansitionsInfo) {
    scene->setSceneIdentifier(sceneIdentifier);
    const SceneGroup::Scene* known = group_.scene(sceneId);
    if (!known) return;
    scene->setSceneConfigData(known->record);
    if (known->fault) reportUnreadable(*known, renderManager_->playback().report());
    buildScene(scene, known->content, sceneTansitionsInfo);
}

void QVMediaManage::buildScene(const std::shared_ptr<QVScene3D>& scene, const platform::Value& sceneFile,
                               const platform::Value& sceneTansitionsInfo) {
    const KeyReader keys(sceneFileKeys, sceneFile);
    if (keys.has("Camera")) {
        if (const auto camera = QVCamera3D::cameraWithInfo(keys.value("Camera"), scene))
            scene->setCamera(camera);
    }
    if (keys.has("LightSourceArray"))
        scene->setLightArray(QVLightBase::lightSourceArrayWithInfo(keys.value("LightSourceArray")));
    if (keys.has("TimeSource")) addTimeSource(scene, keys.value("TimeSource"), sceneTansitionsInfo);
    const platform::Value::Array& nodes = keys.array("object3D");
    for (size_t index = 0; index < nodes.size(); ++index)
        if (!nodes[index].dictionary().empty())
            scene->addChild(
                SceneNodes::object3DWithInfo(nodes[index], scene, SceneNodes::keyPathOf("object3D", index)));
    expectPictures(*scene);
}

void QVMediaManage::addTimeSource(const std::shared_ptr<QVScene3D>& scene, const platform::Value& info,
                                  const platform::Value& sceneTansitionsInfo) {
    const auto timeSource =
        timeSourceWithInfo(info, *renderManager_, weak_from_this(), isRec_, scene, sceneTansitionsInfo);
    if (!timeSource) return;
    timeSource->computeTimeSourceFpsTotal();
    scene->setTimeSource(timeSource);
    timeSource->node()->setKeyPath("TimeSource");
    scene->addChild(timeSource->node());
}

std::shared_ptr<VideoTimeSource> QVMediaManage::timeSourceWithInfo(
    const platform::Value& info, QVMultiSceneRenderManager& renderManager,
    std::weak_ptr<VideoTimeSourceDelegate> delegate, bool isRec, const std::shared_ptr<QVScene3D>& scene,
    const platform::Value& sceneTansitionsInfo) {
    const auto* type = TimeSourceTypes::find(info.string("type"));
    if (!type) return nullptr;
    const auto timeSource = type->make(info, {.renderManager = &renderManager,
                                              .scene = scene,
                                              .isPlayAtActualSpeed = !isRec,
                                              .sceneTansitionsInfo = sceneTansitionsInfo});
    const auto node = timeSource->node();
    node->setScene(scene);
    node->rendInfoWithDic(info);
    timeSource->setDelegate(std::move(delegate));
    return timeSource;
}

// --- what the clocks tell ------------------------------------------------------------------------------

bool QVMediaManage::groupHasEnded() const {
    return currentSceneIndex_ >= static_cast<int64_t>(group_.entries.size());
}

void QVMediaManage::didLoadNextScene(VideoTimeSource&, const std::shared_ptr<QVScene3D>&) {
    preloadNextScene();
}

void QVMediaManage::preloadNextScene() {
    const auto scene = QVScene3D::initRenderManager(*renderManager_);
    renderManager_->setNextScene(scene);
    loadNextScene(scene);
}

/// A transition that comes while an overlay still runs takes its place.
void QVMediaManage::didSceneTransitions(VideoTimeSource&, int32_t tansitionsType, int64_t tansitionsSceneId) {
    const auto type = static_cast<SceneRenderType>(tansitionsType);
    if (type != SceneRenderType::TextureTransition && type != SceneRenderType::Overlay) return;
    cleanUp(renderManager_->transitionsScene(), true);
    const auto scene = QVScene3D::initRenderManager(*renderManager_);
    renderManager_->setSceneRenderType(type);
    renderManager_->setTransitionsScene(scene);
    loadSceneWithSceneId(tansitionsSceneId, scene, {}, {});
}

void QVMediaManage::didCompleteRender(VideoTimeSource&, const std::shared_ptr<QVScene3D>& scene) {
    if (scene && scene == renderManager_->currentScene())
        completeCurrentScene(scene);
    else if (scene && scene == renderManager_->transitionsScene() &&
             renderManager_->sceneRenderType() == SceneRenderType::Overlay)
        completeOverlay(scene);
}

void QVMediaManage::completeCurrentScene(const std::shared_ptr<QVScene3D>& scene) {
    if (!renderManager_->nextScene() && !groupHasEnded()) preloadNextScene();
    if (groupHasEnded()) finishGroup();
    if (renderManager_->sceneRenderType() == SceneRenderType::TextureTransition) {
        cleanUp(renderManager_->transitionsScene(), true);
        renderManager_->setSceneRenderType(SceneRenderType::Single);
    }
    // A running overlay goes on over the next scene.
    const bool isOverlaid = renderManager_->sceneRenderType() == SceneRenderType::Overlay;
    cleanUp(scene, !isOverlaid);
    if (!isOverlaid) renderManager_->setTransitionsScene(nullptr);
    renderManager_->setCurrentScene(renderManager_->nextScene());
    renderManager_->setNextScene(nullptr);
}

void QVMediaManage::completeOverlay(const std::shared_ptr<QVScene3D>& scene) {
    cleanUp(scene, false);
    renderManager_->setSceneRenderType(SceneRenderType::Single);
    renderManager_->setTransitionsScene(nullptr);
}

/// The callback runs on the queue that the manager owns, so the manager is there; the player may not be.
void QVMediaManage::finishGroup() {
    renderManager_->resetCurrentRenderFps();
    if (holdsAtEnd_) renderManager_->frameSink()->finishExport();
    if (isLoopPlayer_ || holdsAtEnd_ || !completeBlock_) return;
    renderManager_->finishRun([manager = renderManager_.get(), block = completeBlock_] {
        if (const auto& frameSink = manager->frameSink()) frameSink->finishExport();
        block();
    });
}

// --- control -------------------------------------------------------------------------------------------

void QVMediaManage::reStartRender(CompletionBlock completion) {
    restart([] {}, std::move(completion));
}

void QVMediaManage::reStartRenderwithSceneGroup(SceneGroup group, CompletionBlock completion) {
    restart([this, group = std::move(group)] { takeGroup(group); }, std::move(completion));
}

void QVMediaManage::restart(std::function<void()> prepare, CompletionBlock completion) {
    renderManager_->reStartRender([weak = weak_from_this(), prepare, completion](uint64_t run) {
        const auto self = weak.lock();
        if (!self) return;
        self->renderManager_->renewFrameSink();
        prepare();
        self->loadFirstScene();
        if (completion) completion();
        platform::DispatchQueue::main().async([weak, run] {
            if (const auto player = weak.lock()) player->renderManager_->stratRun(run);
        });
    });
}

void QVMediaManage::cancelRun(CompletionBlock completion) {
    renderManager_->cancelRun([manager = renderManager_.get(), completion = std::move(completion)] {
        if (const auto& frameSink = manager->frameSink()) frameSink->canleExport();
        if (completion) completion();
    });
}

}  // namespace multiscene
