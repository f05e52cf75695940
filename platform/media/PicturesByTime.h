// Private to platform/media: which picture of a film is seen in each frame of a fixed rate.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/base/CMTime.h"
#include "platform/media/Ffmpeg.h"
#include "platform/media/VideoDecoder.h"

namespace platform {

class PicturesByTime {
  public:
    /// `firstFrame`: the film begins with this one of its frames.
    PicturesByTime(VideoDecoder& decoder, int framesPerSecond, int64_t firstFrame);

    /// Goes on to the next frame; false when the film has ended.
    bool next();
    /// The picture that is seen then: each starts with the frame nearest to its time.
    const AVFrame& picture() const { return *shown_->frame; }
    /// The frame before showed it too.
    bool isShownAgain() const { return isShownAgain_; }
    /// The frame's own time, counted from the first one wanted.
    CMTime time() const { return CMTimeMake(frame_ - firstFrame_, framesPerSecond_); }

  private:
    struct Picture {
        ffmpeg::Frame frame;
        CMTime time, end;
    };
    std::optional<Picture> decode();
    void goNearFirst();
    bool isDue(const Picture& picture) const;

    VideoDecoder& decoder_;
    const int framesPerSecond_;
    const int64_t firstFrame_;
    std::optional<Picture> shown_, coming_;
    int64_t frame_;
    bool isShownAgain_ = false;
};

}  // namespace platform
