// The scene-group player. Glossary: "Flie" is file, "tansitions" is transition, "Rec" is recording.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "group/SceneGroup.h"
#include "platform/base/Value.h"
#include "playback/VideoTimeSource.h"
#include "videoRenderCore/QVMultiSceneRenderManager.h"

namespace multiscene {

/// Plays a scene group: builds one scene at a time for the render driver, one ahead of the one that plays,
/// starts transitions when a clock asks for one, and ends or loops the group. Loading runs on the render
/// queue; operations marked "any thread" get there by themselves.
class QVMediaManage : public VideoTimeSourceDelegate, public std::enable_shared_from_this<QVMediaManage> {
  public:
    using CompletionBlock = QVMultiSceneRenderManager::CompletionBlock;

    static std::shared_ptr<QVMediaManage> initWithRenderManager(
        std::shared_ptr<QVMultiSceneRenderManager> renderManager, bool isLoopPlayer);

    // Settings, before loading
    /// Rendering for a file: video sources decode as fast as they can instead of at their own rate.
    void setIsRec(bool isRec) { isRec_ = isRec; }
    /// At the group's end the run waits to be started again, with everything that its painter keeps: for a
    /// frame sink that holds the run up (QVMorrow3DGLVIew), which is told by finishExport().
    void setHoldsAtEnd(bool holds) { holdsAtEnd_ = holds; }
    /// Called once, on the render queue, when a group that does not loop has played to its end: the run is
    /// over, the scenes are gone and the exporter, if there is one, has been told to finish. Without a block
    /// the end of the group goes unnoticed, and the run ends as failed.
    void setOnSceneGroupRenderingCompleteBlock(CompletionBlock block) { completeBlock_ = std::move(block); }
    /// Called once, on the render queue, when the group cannot be played to its end.
    void setOnSceneGroupRenderingFailedBlock(QVMultiSceneRenderManager::FailureBlock block) {
        renderManager_->setRunFailedBlock(std::move(block));
    }

    /// Loads the first scene of a group whose scene files have been read, and starts the run. Any thread.
    /// Throws Error(Template) when the first scene names a type that does not exist.
    void loadSceneGroup(SceneGroup group);

    // Control, any thread
    void reStartRender(CompletionBlock completion = {});
    void reStartRenderwithSceneGroup(SceneGroup group, CompletionBlock completion = {});
    /// Stops the run, gives up the export, then calls back on the render queue.
    void cancelRun(CompletionBlock completion);
    void pauseRun() { renderManager_->pauseRun(); }
    void continueRun() { renderManager_->continueRun(); }

    // Render queue
    /// Fills the scene with the next entry of the group; false when the group has ended and does not loop.
    bool loadNextScene(const std::shared_ptr<QVScene3D>& scene);
    /// Fills one scene of the group. A scene that the group does not know, or whose file could not be read,
    /// stays empty; the latter is listed in the report.
    void loadSceneWithSceneId(int64_t sceneId, const std::shared_ptr<QVScene3D>& scene,
                              const std::string& sceneIdentifier, const platform::Value& sceneTansitionsInfo);
    /// The clock of a scene by its "type", configured, its delegate set; none for an unknown type.
    static std::shared_ptr<VideoTimeSource> timeSourceWithInfo(
        const platform::Value& info, QVMultiSceneRenderManager& renderManager,
        std::weak_ptr<VideoTimeSourceDelegate> delegate, bool isRec, const std::shared_ptr<QVScene3D>& scene,
        const platform::Value& sceneTansitionsInfo);

    // VideoTimeSourceDelegate
    void didLoadNextScene(VideoTimeSource& timeSource, const std::shared_ptr<QVScene3D>& scene) override;
    void didSceneTransitions(VideoTimeSource& timeSource, int32_t tansitionsType,
                             int64_t tansitionsSceneId) override;
    void didCompleteRender(VideoTimeSource& timeSource, const std::shared_ptr<QVScene3D>& scene) override;

    bool isLoopPlayer() const { return isLoopPlayer_; }
    const SceneGroup& group() const { return group_; }
    const std::shared_ptr<QVMultiSceneRenderManager>& renderManager() const { return renderManager_; }

  private:
    QVMediaManage(std::shared_ptr<QVMultiSceneRenderManager> renderManager, bool isLoopPlayer);

    void takeGroup(SceneGroup group);
    void loadFirstScene();
    void restart(std::function<void()> prepare, CompletionBlock completion);
    void buildScene(const std::shared_ptr<QVScene3D>& scene, const platform::Value& sceneFile,
                    const platform::Value& sceneTansitionsInfo);
    void addTimeSource(const std::shared_ptr<QVScene3D>& scene, const platform::Value& info,
                       const platform::Value& sceneTansitionsInfo);
    bool groupHasEnded() const;
    void preloadNextScene();
    void finishGroup();
    void completeCurrentScene(const std::shared_ptr<QVScene3D>& scene);
    void completeOverlay(const std::shared_ptr<QVScene3D>& scene);

    std::shared_ptr<QVMultiSceneRenderManager> renderManager_;
    bool isLoopPlayer_ = false, isRec_ = false, holdsAtEnd_ = false;
    CompletionBlock completeBlock_;
    SceneGroup group_;
    int64_t currentSceneIndex_ = -1;  // of the scene loaded last, mostly one ahead of the one that plays
};

}  // namespace multiscene
