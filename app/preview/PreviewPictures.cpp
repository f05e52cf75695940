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

}  // namespace

void PreviewPictures::take(PreviewPicture picture) {
    constexpr double weight = 0.3;
    drawSeconds_ += weight * (picture.milliseconds / 1000 - drawSeconds_);
    isLost_ = false;
    ready_.push_back(std::move(picture));
}

bool PreviewPictures::choose(int64_t frame, bool isPlaying) {
    const auto isDue = [&](const PreviewPicture& picture) {
        return isPlaying ? picture.frame <= frame : picture.frame == frame;
    };
    const auto last = std::find_if(ready_.rbegin(), ready_.rend(), isDue);
    if (last == ready_.rend()) return false;
    PreviewPicture picture = std::move(*last);
    ready_.erase(ready_.begin(), last.base());
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
}

void PreviewPictures::forget() {
    leap();
    isFresh_ = false;
}

std::optional<int64_t> PreviewPictures::next(int64_t frame, bool isPlaying, int64_t lastFrame,
                                             int framesPerSecond) const {
    if (!isPlaying || isLost_ || !isFresh_)
        return isShowing(frame) ? std::nullopt : std::optional(std::min(frame, lastFrame));
    if (ready_.size() >= kAhead) return std::nullopt;
    const int64_t latest = ready_.empty() ? shown_->frame : ready_.back().frame;
    const auto late = static_cast<int64_t>(std::ceil(drawSeconds_ * framesPerSecond));
    const int64_t wanted = latest + 1 > frame ? latest + 1 : frame + std::max<int64_t>(late, 1);
    if (latest >= lastFrame) return std::nullopt;
    return std::min(wanted, lastFrame);
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
