#include "app/preview/PreviewSound.h"

#include <algorithm>
#include <cmath>

#include "app/preview/PreviewTalk.h"
#include "platform/audio/AudioFile.h"
#include "platform/base/Clock.h"
#include "platform/base/Error.h"

namespace multiscene {

using platform::kAudioChannels;
using platform::kAudioSampleRate;

namespace {

constexpr int64_t kAhead = kAudioSampleRate * 3 / 4;  // sample frames: what may come late
constexpr int64_t kEnough = kAudioSampleRate / 10;
constexpr double kLostDevice = 1;  // seconds without being asked

int64_t framesIn(double seconds) { return static_cast<int64_t>(seconds * kAudioSampleRate); }

float playable(float sample) { return std::isfinite(sample) ? std::clamp(sample, -1.0F, 1.0F) : 0; }

}  // namespace

PreviewSound::PreviewSound(bool isSilent) {
    if (isSilent) return;
    try {
        filledAt_ = platform::monotonicSeconds();
        device_ = platform::openSoundOut(kAudioSampleRate,
                                         [this](float* samples, int64_t frames) { fill(samples, frames); });
        const std::lock_guard lock(mutex_);
        block_ = device_->blockFrames();
    } catch (const platform::Error& error) {
        fault_ = error.message();
    }
}

PreviewSound::~PreviewSound() { device_.reset(); }

// Playing

void PreviewSound::setPlaying(bool isPlaying) {
    const int64_t now = position();
    const std::lock_guard lock(mutex_);
    isPlaying_ = isPlaying;
    clockStart_ = now;
    clockAt_ = platform::monotonicSeconds();
}

void PreviewSound::setMuted(bool isMuted) {
    const std::lock_guard lock(mutex_);
    isMuted_ = isMuted;
}

void PreviewSound::seek(int64_t position) {
    const std::lock_guard lock(mutex_);
    restart(position, platform::monotonicSeconds());
}

void PreviewSound::restart(int64_t position, double now) {
    samples_.clear();
    taken_ = asked_ = filledTo_ = told_ = clockStart_ = position;
    clockAt_ = now;
}

void PreviewSound::setEnd(int64_t position) {
    const std::lock_guard lock(mutex_);
    end_ = position;
}

bool PreviewSound::keepsTimeByClock(double now) const { return !device_ || now - filledAt_ > kLostDevice; }

int64_t PreviewSound::clockPosition(double now) const {
    return clockStart_ + (isPlaying_ ? framesIn(now - clockAt_) : 0);
}

/// Half a block is in the device on the average, and another waits behind it.
int64_t PreviewSound::position() {
    const std::lock_guard lock(mutex_);
    const double now = platform::monotonicSeconds();
    int64_t heard = 0;
    if (keepsTimeByClock(now)) {
        heard = clockPosition(now);
        if (heard > taken_ + kAudioSampleRate) restart(heard, now);  // a device that comes back goes on here
    } else {
        heard = std::min(filledTo_ - block_ + framesIn(now - filledAt_), taken_);
        if (!isPlaying_) heard = taken_;
        clockStart_ = heard;
        clockAt_ = now;
    }
    told_ = std::clamp(heard, told_, std::max(end_, told_));
    return told_;
}

bool PreviewSound::isReady() {
    const std::lock_guard lock(mutex_);
    const auto there = static_cast<int64_t>(samples_.size()) / kAudioChannels;
    return !device_ || there >= kEnough || taken_ + there >= end_;
}

/// On the device's thread.
void PreviewSound::fill(float* samples, int64_t frames) {
    const std::lock_guard lock(mutex_);
    filledAt_ = platform::monotonicSeconds();
    filledTo_ = taken_;
    int64_t given = 0;
    if (isPlaying_) {
        const auto there = static_cast<int64_t>(samples_.size()) / kAudioChannels;
        given = std::max<int64_t>(std::min({frames, there, end_ - taken_}), 0);
        const auto last = samples_.begin() + given * kAudioChannels;
        std::transform(samples_.begin(), last, samples,
                       [this](float sample) { return isMuted_ ? 0 : playable(sample); });
        samples_.erase(samples_.begin(), last);
        taken_ += given;
    }
    std::fill(samples + given * kAudioChannels, samples + frames * kAudioChannels, 0.0F);
}

// Feeding

std::pair<int64_t, int64_t> PreviewSound::wanted() {
    const std::lock_guard lock(mutex_);
    const int64_t from = asked_;
    const bool isEnough = !device_ || asked_ - taken_ >= kAhead || asked_ >= end_;
    const int64_t frames = isEnough ? 0 : previewTalk::kMostSoundFrames;
    asked_ += frames;
    return {from, frames};
}

void PreviewSound::take(int64_t from, const float* samples, int64_t frames) {
    const std::lock_guard lock(mutex_);
    const int64_t next = taken_ + static_cast<int64_t>(samples_.size()) / kAudioChannels;
    if (from != next || from + frames > asked_) return;
    samples_.insert(samples_.end(), samples, samples + frames * kAudioChannels);
}

void PreviewSound::forget() {
    const std::lock_guard lock(mutex_);
    asked_ = taken_ + static_cast<int64_t>(samples_.size()) / kAudioChannels;
}

}  // namespace multiscene
