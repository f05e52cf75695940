#include "platform/media/PicturesByTime.h"

#include "platform/media/FilmLength.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/mathematics.h>
}

namespace platform {

PicturesByTime::PicturesByTime(VideoDecoder& decoder, int framesPerSecond)
    : decoder_(decoder), framesPerSecond_(framesPerSecond), coming_(decode()) {}

bool PicturesByTime::next() {
    ++frame_;
    isShownAgain_ = shown_.has_value();
    while (coming_ && (!shown_ || isDue(*coming_))) {
        shown_ = std::move(coming_);
        coming_ = decode();
        isShownAgain_ = false;
    }
    return shown_ && (coming_ || frame_ < framesWithin(shown_->end, framesPerSecond_));
}

std::optional<PicturesByTime::Picture> PicturesByTime::decode() {
    if (!decoder_.next()) return std::nullopt;
    Picture picture{ffmpeg::newFrame(), decoder_.time(), decoder_.endTime()};
    ffmpeg::check(av_frame_ref(picture.frame.get(), &decoder_.picture()), "a picture cannot be kept", {});
    return picture;
}

/// Nearer to this frame, or to an earlier one, than to the next.
bool PicturesByTime::isDue(const Picture& picture) const {
    return av_compare_ts(picture.time.value, {1, picture.time.timescale}, 2 * frame_ + 1,
                         {1, 2 * framesPerSecond_}) < 0;
}

}  // namespace platform
