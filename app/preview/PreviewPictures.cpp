#include "app/preview/PreviewPictures.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "app/preview/PreviewTalk.h"
#include "platform/base/Clock.h"

namespace multiscene {

namespace {

constexpr size_t kAhead = 3;     // pictures that wait for their time
constexpr double kRateSpan = 2;  // seconds over which the rate is counted
constexpr double kLongestStep =
    0.4;  // seconds without a new picture, as far as one frame can be drawn in that

}  // namespace

void PreviewPictures::take(PreviewPicture picture) {
    constexpr double weight = 0.3;
    const double seconds = picture.milliseconds / 1000;
    // One that lies before was played up to from the start.
    const int64_t frames = picture.frame > taken_ ? picture.frame - taken_ : picture.frame + 1;
    const double share = seconds / static_cast<double>(std::max<int64_t>(frames, 1));
    drawSeconds_ += weight * (seconds - drawSeconds_);
    frameSeconds_ = std::max(share, frameSeconds_ + weight * (share - frameSeconds_));
    taken_ = picture.frame;
    isLost_ = false;
    ready_.push_back(std::move(picture));
}

bool PreviewPictures::choose(int64_t frame, bool isPlaying) {
    if (isPlaying && isWandering_) leap();
    const auto isDue = [&](const PreviewPicture& picture) {
        return isWandering_ || (isPlaying ? picture.frame <= frame : picture.frame == frame);
    };
    const auto last = std::find_if(ready_.rbegin(), ready_.rend(), isDue);
    if (last == ready_.rend()) return false;
    PreviewPicture picture = std::move(*last);
    ready_.erase(ready_.begin(), last.base());
    isWandering_ = isWandering_ && picture.frame != frame;
    put(std::move(picture), isPlaying);
    return true;
}

void PreviewPictures::put(PreviewPicture picture, bool isPlaying) {
    if (isPlaying && isFresh_ && shown_ && picture.frame > shown_->frame)
        dropped_ += picture.frame - shown_->frame - 1;
    shown_ = std::move(picture);
    isFresh_ = true;
    ++version_;
    const double now = platform::monotonicSeconds();
    shownAt_.push_back(now);
    while (now - shownAt_.front() > kRateSpan) shownAt_.pop_front();
}

double PreviewPictures::shownASecond() const {
    if (shownAt_.size() < 2 || platform::monotonicSeconds() - shownAt_.back() > 1) return 0;
    return static_cast<double>(shownAt_.size() - 1) / std::max(shownAt_.back() - shownAt_.front(), 1e-3);
}

void PreviewPictures::leap() {
    ready_.clear();
    isLost_ = dropsAsked_ = true;
    isWandering_ = false;
}

void PreviewPictures::wander() {
    ready_.clear();
    isLost_ = isWandering_ = true;
}

void PreviewPictures::forget() {
    leap();
    isFresh_ = false;
    taken_ = -1;
}

std::optional<int64_t> PreviewPictures::next(int64_t frame, bool isPlaying, int64_t lastFrame,
                                             int framesPerSecond) const {
    if (!isPlaying || isLost_ || !isFresh_)
        return isShowing(frame) ? std::nullopt : std::optional(std::min(frame, lastFrame));
    if (ready_.size() >= kAhead) return std::nullopt;
    const int64_t latest = ready_.empty() ? shown_->frame : ready_.back().frame;
    if (latest >= lastFrame) return std::nullopt;
    return std::min(latest + 1 > frame ? latest + 1 : inTime(frame, latest, framesPerSecond), lastFrame);
}

/// The frame that will be due once it is drawn. Where even leaving frames out takes as long as showing them
/// the way there would only grow, and hardly a picture would be seen: then pictures come late.
int64_t PreviewPictures::inTime(int64_t frame, int64_t latest, int framesPerSecond) const {
    const auto late = static_cast<int64_t>(std::ceil(drawSeconds_ * framesPerSecond));
    const double reached = kLongestStep / std::max(frameSeconds_, 1e-4);
    return std::min(frame + std::max<int64_t>(late, 1), latest + std::max<int64_t>(std::llround(reached), 1));
}

void PreviewPictures::ask(PreviewFeed& feed, int64_t frame, bool isPlaying, int64_t lastFrame,
                          int framesPerSecond) {
    if (std::exchange(dropsAsked_, false)) feed.dropAsked();
    const auto wanted = next(frame, isPlaying, lastFrame, framesPerSecond);
    // What is on its way is waited for.
    if (!wanted || feed.isAsked()) return;
    if (const auto slot = freeSlot(feed)) feed.askPicture(*wanted, *slot);
}

std::optional<int> PreviewPictures::freeSlot(const PreviewFeed& feed) const {
    for (int slot = 0; slot < previewTalk::kSlots; ++slot) {
        const auto holds = [&](const PreviewPicture& picture) { return picture.slot == slot; };
        if (feed.isInUse(slot) || std::any_of(ready_.begin(), ready_.end(), holds)) continue;
        if (!(shown_ && isFresh_ && holds(*shown_))) return slot;
    }
    return std::nullopt;
}

}  // namespace multiscene
