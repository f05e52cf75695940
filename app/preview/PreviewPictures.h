#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "app/preview/PreviewFeed.h"

namespace multiscene {

/// Which picture is on the screen, and which are asked for: ahead of time while they come fast enough, else
/// those only that will be in time. One thread.
class PreviewPictures {
  public:
    void take(PreviewPicture picture);
    /// Takes the picture for `frame` if one is there: in a moment that lasts this very one, or what has come
    /// on a way, else the latest that is due. True when another one is to be shown.
    bool choose(int64_t frame, bool isPlaying);
    /// Asks for what is wanted next.
    void ask(PreviewFeed& feed, int64_t frame, bool isPlaying, int64_t lastFrame, int framesPerSecond);
    /// Somebody goes elsewhere: what is there and on its way is not what comes next.
    void leap();
    /// Somebody goes on to many places, one after the other: what was asked for on the way is seen, so that
    /// something is.
    void wander();
    /// The feed is another one, or has opened the video again: the one that is shown stays on the screen.
    void forget();

    const std::optional<PreviewPicture>& shown() const { return shown_; }
    bool isShowing(int64_t frame) const { return shown_ && isFresh_ && shown_->frame == frame; }
    uint64_t version() const { return version_; }
    int64_t dropped() const { return dropped_; }
    double shownASecond() const;

  private:
    void put(PreviewPicture picture, bool isPlaying);
    std::optional<int64_t> next(int64_t frame, bool isPlaying, int64_t lastFrame, int framesPerSecond) const;
    int64_t inTime(int64_t frame, int64_t latest, int framesPerSecond) const;
    std::optional<int> freeSlot(const PreviewFeed& feed) const;

    std::optional<PreviewPicture> shown_;
    std::deque<PreviewPicture> ready_;  ///< in the order of their frames
    bool isFresh_ = false;              ///< the one shown is of what is open
    bool isLost_ = true;                ///< nothing has come since the leap
    bool isWandering_ = false;
    bool dropsAsked_ = false;
    uint64_t version_ = 0;
    int64_t dropped_ = 0;
    int64_t taken_ = -1;                         ///< the frame that came last
    double drawSeconds_ = 0, frameSeconds_ = 0;  ///< a picture took lately; shared among the frames up to it
    std::deque<double> shownAt_;
};

}  // namespace multiscene
