#include "platform/media/PicturesByTime.h"

#include "platform/media/FilmLength.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/mathematics.h>
}

namespace platform {

PicturesByTime::PicturesByTime(VideoDecoder& decoder, int framesPerSecond, int64_t firstFrame)
    : decoder_(decoder),
      framesPerSecond_(framesPerSecond),
      firstFrame_(firstFrame),
      coming_(decode()),
      frame_(firstFrame - 1) {
    if (firstFrame > 0 && coming_) goNearFirst();
}

/// To a picture from which on all can be decoded, and that is not later than the first one wanted.
void PicturesByTime::goNearFirst() {
    const CMTime wanted = CMTimeMake(firstFrame_, framesPerSecond_);
    // A file may say that it can be entered where it cannot.
    for (const int secondsBefore : {0, 10, 60}) {
        if (!decoder_.seek(wanted, secondsBefore)) break;
        coming_ = decode();
        if (coming_ && av_compare_ts(coming_->time.value, {1, coming_->time.timescale}, wanted.value,
                                     {1, wanted.timescale}) <= 0)
            return;
    }
    decoder_.seekToStart();
    coming_ = decode();
}

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
