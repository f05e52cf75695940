// A video that is held ready: any of its frames, with any values of its user, as the export would have it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

#include "app/job/JobFolder.h"
#include "app/job/JobObserver.h"
#include "app/job/PreparedGroup.h"
#include "app/preview/NodeValues.h"
#include "app/preview/SoundScore.h"
#include "report/FrameStatistics.h"
#include "videoRenderCore/AUSAudioPlayer.h"
#include "videoRenderCore/QVMediaManage.h"
#include "videoRenderCore/QVMorrow3DGLVIew.h"

namespace multiscene {

/// Main thread, which pumps the main queue while a frame is on its way; the sound is read on any other.
class HeldPlayer {
  public:
    /// What became of a frame that was asked for.
    enum class Outcome {
        Shown,
        BeyondEnd,  ///< the group has fewer frames; how many, is known now
        GivenUp,    ///< somebody no longer wanted it
    };

    /// Opens and judges the source as a job does. Throws platform::Error.
    HeldPlayer(const RenderRequest& request, JobObserver& observer, const std::stop_token& stop);
    ~HeldPlayer();
    HeldPlayer(const HeldPlayer&) = delete;
    HeldPlayer& operator=(const HeldPlayer&) = delete;

    /// A frame that was shown can be shown again with other values at once; what comes after it is not begun
    /// meanwhile. Before the first show().
    void holdFrames() { view_->setHoldsFrames(); }

    const std::string& name() const { return group_.playable.name; }
    const MediaFormat& format() const { return group_.format; }
    /// The frame that is held, else the one that comes next.
    int64_t position() const;
    /// As the catalogue says, until the group was played to its end; below 1: not known.
    int64_t frames() const;

    /// Draws a frame into `picture`: of the format's size, rows packed. Forward by playing without drawing,
    /// backward by playing again from the start. `isGivenUp` is asked now and then while that goes on; the
    /// memory may be drawn into until the next call, whatever the outcome. Throws platform::Error when the
    /// group cannot be played; every later call throws the same.
    Outcome show(
        int64_t frame, const platform::Canvas& picture,
        const std::function<bool()>& isGivenUp = [] { return false; });
    /// Shows the frame as show() does, and says what it consists of, as "trace" prints it; none when it is
    /// not shown. With holdFrames().
    std::optional<std::string> trace(int64_t frame, const platform::Canvas& picture,
                                     const std::function<bool()>& isGivenUp);
    /// The next frame that is shown has these values of the user. Where they say no more than what nodes
    /// show, the frame that is held takes them in, else the group is played again up to it. Throws
    /// platform::Error and keeps the old ones.
    void setInputs(const JobInputs& inputs, const std::stop_token& stop);
    /// Of those that are set: keys that the template asks for and that were not given.
    const std::vector<std::string>& missingInputs() const { return group_.missingInputs; }
    const PreparedGroup& group() const { return group_; }

    /// What is to be heard; ready once the score is (see score()). Any thread.
    const std::shared_ptr<AUSAudioPlayer>& sound() const { return driver_->audioPlayer(); }
    /// Finds out when which sound is heard, from its first start() on. Any thread.
    const std::shared_ptr<SoundScore>& score() const { return score_; }
    /// Of the frames so far; any thread.
    FrameStatistics statistics() const;

  private:
    struct Shared;

    void createDriver();
    void createScore();
    void playTo(int64_t frame);
    void start();
    void startAgain();
    void exchange(std::set<std::string> keys);
    bool hasFailed() const;
    bool isBeyondEnd(int64_t frame) const;
    void requireRunning() const;
    void requireTemplate() const;

    const JobFolder job_;
    PreparedGroup group_;
    MusicSettings musicSettings_;
    std::shared_ptr<Shared> shared_;
    std::shared_ptr<QVMorrow3DGLVIew> view_;
    std::shared_ptr<QVMultiSceneRenderManager> driver_;
    std::shared_ptr<QVMediaManage> player_;
    std::shared_ptr<SoundScore> score_;
    NodeValues nodeValues_;
    std::set<std::string> changing_;  ///< keys of values that the driver has not taken over
    bool isStarted_ = false;
};

}  // namespace multiscene
