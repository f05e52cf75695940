#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "platform/base/CMTime.h"
#include "platform/base/NotificationCenter.h"
#include "videoDecode/QVVideoFrameRenderOutput.h"

namespace multiscene {

class QVScene3D;
class QVVideoReader;
class RenderDriver;

/// Posted by the render driver when it goes on after a pause.
inline constexpr const char* kRefushMultiSceneRenderStartTime = "kRefushMultiSceneRenderStartTime";

/// Hands a scene one frame for each rendered frame and sets the scene's frame time; never skips or repeats
/// frames to keep pace with a clock. It ends one frame after `fpsTotal` was reached (so it delivers
/// fpsTotal + 1 frames), or when its video runs dry. Only a decoder that plays at actual speed ever sleeps,
/// and only while its scene is the one presented. Render queue only.
class QVVideoDecodeBase {
  public:
    /// Whether the owning scene is the one being presented; only then is the pace kept.
    enum class TimeSourceRenderType : int32_t { Presented = 0, Hidden = 1 };

    QVVideoDecodeBase();
    virtual ~QVVideoDecodeBase() = default;

    // Callbacks must not keep the owner of the decoder alive.
    std::function<void(const QVVideoFrameRenderOutput*)> onNewFrameReadyAtRenderOutput;  ///< null clock: none
    std::function<void()> onVideoDecodeStart;
    std::function<void()> onVideoDecodeFinish;

    /// Produces the frame of this turn.
    void decodeNextFpsWithGroupQueue();
    /// After the frame was drawn: ends the source when it has completed, after every further frame too. A
    /// source that ran out while its scene was not yet the current one is so ended when it is.
    void fpsRenderCompletedHandle();
    /// Stops reading and gives the pictures up; may run twice.
    virtual void cancelDecode() {}
    void computeRenderType();
    /// What it reads.
    virtual std::vector<const QVVideoReader*> readers() const { return {}; }
    /// Real time counts from now and from the frame that has been reached. Any thread.
    void refushRenderStartTime() { isRebaseAsked_ = true; }

    void setRenderManager(RenderDriver* renderManager) { renderManager_ = renderManager; }
    void setCurrentScene(const std::shared_ptr<QVScene3D>& scene) { currentScene_ = scene; }
    void setIsPlayAtActualSpeed(bool actualSpeed) { isPlayAtActualSpeed_ = actualSpeed; }
    int32_t fpsTotal() const { return fpsTotal_; }  ///< frames
    void setFpsTotal(int32_t frames) { fpsTotal_ = frames; }
    int32_t currentFps() const { return currentFps_; }  ///< frames delivered

  protected:
    /// Reads the next frame; false when there is none.
    virtual bool readFrame() = 0;
    /// The time of the frame that was read.
    virtual platform::CMTime frameTime() const = 0;
    virtual void deliverFrame() = 0;

  private:
    void startOnce();
    void keepPace(int32_t framesPerSecond);

    RenderDriver* renderManager_ = nullptr;
    std::weak_ptr<QVScene3D> currentScene_;
    bool isPlayAtActualSpeed_ = false, isStartDecodeOnce_ = false;
    bool completedOrFailed_ = false;  // no more frames will come: the video is dry or the frames are spent
    TimeSourceRenderType timeSourceRenderType_ = TimeSourceRenderType::Presented;
    int32_t fpsTotal_ = 0, currentFps_ = 0;
    double startRenderTime_ = 0;  // seconds
    int32_t startRenderFps_ = 0;  // frames delivered at startRenderTime_
    std::atomic<bool> isRebaseAsked_ = false;
    platform::NotificationCenter::Token resumed_;
};

}  // namespace multiscene
