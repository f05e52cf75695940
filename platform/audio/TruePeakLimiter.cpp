#include "platform/audio/TruePeakLimiter.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace platform {

namespace {

// A tenth of a second, until most of a reduction has gone.
const double kRelease = std::exp(-1.0 / (0.1 * kAudioSampleRate));
constexpr double kReleased = 1e-4;  // a reduction that nobody hears: 0.001 dB

/// The weight of a sample `distance` samples away from the point wanted: a sinc within a Hann window.
double weight(double distance, double reach) {
    if (distance == 0) return 1;
    const double angle = std::numbers::pi * distance;
    return std::sin(angle) / angle * (0.5 + 0.5 * std::cos(angle / reach));
}

}  // namespace

TruePeakLimiter::TruePeakLimiter(float ceiling)
    : ceiling_(ceiling), delayed_((kLatency + 1) * kAudioChannels), window_(kAhead, 1.0), windowSum_(kAhead) {
    constexpr int middle = kTaps / 2 - 1;
    for (int phase = 0; phase < kPhases; ++phase)
        for (int tap = 0; tap < kTaps; ++tap)
            points_[static_cast<size_t>(phase)][static_cast<size_t>(tap)] =
                static_cast<float>(weight(tap - middle - static_cast<double>(phase) / kPhases, kTaps / 2.0));
}

void TruePeakLimiter::process(const float* samples, int64_t frames, std::vector<float>& output) {
    for (int64_t i = 0; i < frames; ++i) take(samples + i * kAudioChannels, output);
}

void TruePeakLimiter::finish(std::vector<float>& output) {
    constexpr std::array<float, kAudioChannels> silence{};
    for (int64_t left = position_ - given_; left > 0; --left) take(silence.data(), output);
}

void TruePeakLimiter::take(const float* frame, std::vector<float>& output) {
    constexpr int64_t ring = kLatency + 1;
    float* const newest = delayed_.data() + position_ % ring * kAudioChannels;
    for (size_t channel = 0; channel < kAudioChannels; ++channel) {
        auto& latest = latest_[channel];
        std::copy(latest.begin() + 1, latest.end(), latest.begin());
        latest.back() = newest[channel] = frame[channel];
    }
    const float volume = smoothed(wantedVolume());
    if (++position_ <= kLatency) return;
    const float* const oldest = delayed_.data() + position_ % ring * kAudioChannels;
    for (size_t channel = 0; channel < kAudioChannels; ++channel) output.push_back(oldest[channel] * volume);
    ++given_;
}

/// The highest level from the middle one of the latest samples up to the next.
float TruePeakLimiter::peak() const {
    float highest = 0;
    for (const auto& samples : latest_)
        for (const auto& point : points_) {
            float level = 0;
            for (size_t tap = 0; tap < kTaps; ++tap) level += point[tap] * samples[tap];
            highest = std::max(highest, std::abs(level));
        }
    return highest;
}

/// The lowest volume that any peak asks for that is less than kAhead frames away, held until it has passed.
float TruePeakLimiter::wantedVolume() {
    const float level = peak();
    const float asked = level > ceiling_ ? ceiling_ / level : 1.0f;
    while (!lowest_.empty() && lowest_.back().second >= asked) lowest_.pop_back();
    lowest_.emplace_back(position_, asked);
    while (lowest_.front().first < position_ - kAhead - 1) lowest_.pop_front();
    return lowest_.front().second;
}

/// Comes back up slowly, and never steps: the mean of the last kAhead volumes, each low enough for the frame
/// that is given next.
float TruePeakLimiter::smoothed(float volume) {
    released_ = std::min<double>(volume, 1 - (1 - released_) * kRelease);
    if (1 - released_ < kReleased && volume == 1) released_ = 1;
    double& slot = window_[static_cast<size_t>(position_ % kAhead)];
    reduced_ += (released_ < 1) - (slot < 1);
    windowSum_ += released_ - slot;
    slot = released_;
    // Exactly 1, so that the sound stays what it is.
    if (reduced_ == 0) windowSum_ = kAhead;
    return static_cast<float>(windowSum_ / kAhead);
}

}  // namespace platform
