#include "platform/audio/SoundLoop.h"

#include <algorithm>

namespace platform {

namespace {
constexpr int64_t kMostKept = 60 * kAudioSampleRate;  // sample frames
}

SoundLoop::SoundLoop(const AudioFile& file, int64_t start)
    : file_(file), start_(std::max<int64_t>(start, 0)), length_(file.frameCount() - start_) {
    if (length_ > 0 && length_ <= kMostKept) keepAll();
}

void SoundLoop::keepAll() {
    std::vector<float> round(static_cast<size_t>(length_) * kAudioChannels);
    decode(round.data(), length_);
    reader_.reset();
    kept_ = std::move(round);
}

void SoundLoop::read(float* samples, int64_t frames) {
    if (length_ <= 0) {
        std::fill_n(samples, frames * kAudioChannels, 0.0f);
        return;
    }
    while (frames > 0) {
        const int64_t now = std::min(frames, length_ - position_);
        if (kept_.empty())
            decode(samples, now);
        else
            std::copy_n(kept_.data() + position_ * kAudioChannels, now * kAudioChannels, samples);
        position_ = (position_ + now) % length_;
        samples += now * kAudioChannels;
        frames -= now;
    }
}

void SoundLoop::skip(int64_t frames) {
    if (length_ <= 0) return;
    position_ = (position_ + frames) % length_;
    reader_.reset();
}

void SoundLoop::decode(float* samples, int64_t frames) {
    if (position_ == 0 || !reader_) reader_.emplace(file_).skip(start_ + position_);
    const int64_t got = reader_->read(samples, frames);
    std::fill(samples + got * kAudioChannels, samples + frames * kAudioChannels, 0.0f);
}

}  // namespace platform
