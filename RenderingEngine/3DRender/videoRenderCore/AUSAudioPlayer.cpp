#include "videoRenderCore/AUSAudioPlayer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "output/ExportSound.h"
#include "platform/audio/AudioMix.h"

namespace multiscene {

using platform::kAudioChannels;
using platform::TrackMixer;
using platform::Value;

namespace {

constexpr float endlessTime = 1e6F;  // seconds, longer than any preview runs
const auto highestPeak = static_cast<float>(std::pow(10, platform::kHighestTruePeak / 20));
constexpr float highestLevel = 16;  // far over full scale; files of floats may hold anything

/// A clip that loops within its window, as only a live preview has it.
void loopInWindow(const Value& entry, int32_t framesPerSecond, platform::AudioTrack& track) {
    const int64_t start = ExportSound::hundredthsOfFrame(entry.integer("fpsStart"), framesPerSecond);
    const int64_t end = ExportSound::hundredthsOfFrame(entry.integer("fpsEnd"), framesPerSecond);
    track.insertions.back().isLooped = true;
    track.insertions.back().duration = platform::CMTimeMake(std::max<int64_t>(end - start, 0), 100);
}

}  // namespace

AUSAudioPlayer::AUSAudioPlayer(std::shared_ptr<Playback> playback, int32_t framesPerSecond)
    : playback_(std::move(playback)),
      framesPerSecond_(framesPerSecond),
      files_(*playback_),
      limiter_(highestPeak) {}

// Channels

void AUSAudioPlayer::setTotalFrames(int64_t frames) {
    const std::lock_guard lock(mutex_);
    if (totalFrames_ == frames) return;
    totalFrames_ = frames;
    filmVolume_ = frames > 0 ? ExportSound::synthesisAudioFade(totalTime()) : platform::VolumeEnvelope();
    remakeMixers();
}

void AUSAudioPlayer::followScore(const Entries& score) {
    const std::lock_guard lock(mutex_);
    const auto isIn = [](const Entries& list, const Value& entry) {
        return std::find(list.begin(), list.end(), entry) != list.end();
    };
    if (!score_) channels_.clear();
    std::erase_if(channels_, [&](const Channel& channel) { return !isIn(score, channel.entry); });
    const Entries known = std::exchange(score_, score).value_or(Entries());
    for (const Value& entry : score)
        if (!isIn(known, entry)) addChannel(entry);
    updateBgAudioVolume();
}

void AUSAudioPlayer::addAudioTrackWithInfo(const Value& info) {
    const std::lock_guard lock(mutex_);
    if (!score_ && addChannel(info)) updateBgAudioVolume();
}

void AUSAudioPlayer::deleteChannelWithKey(const std::string& audioName, bool isBgAudio) {
    const std::lock_guard lock(mutex_);
    if (score_) return;
    std::erase_if(channels_, [&](const Channel& channel) {
        return channel.entry.string("audioName") == audioName &&
               (isBgAudio || !ExportSound::isMusic(channel.entry));
    });
    updateBgAudioVolume();
}

AUSAudioPlayer::Entries AUSAudioPlayer::entries() const {
    if (score_) return *score_;
    Entries all;
    for (const Channel& channel : channels_) all.push_back(channel.entry);
    return all;
}

/// A sound that cannot be read has no channel; the report says so.
bool AUSAudioPlayer::addChannel(const Value& entry) {
    const SoundFiles::Sound sound = files_.open(entry);
    if (!sound) return false;
    channels_.push_back({entry, sound, mixerOf(entry, sound)});
    return true;
}

TrackMixer AUSAudioPlayer::mixerOf(const Value& entry, const SoundFiles::Sound& sound) const {
    platform::AudioTrack track = ExportSound::trackOf(entry, sound, entries(), framesPerSecond_, totalTime());
    if (!score_ && !ExportSound::isMusic(entry) && entry.boolean("isLoop"))
        loopInWindow(entry, framesPerSecond_, track);
    return TrackMixer(track);
}

void AUSAudioPlayer::remakeMixers() {
    for (Channel& channel : channels_) channel.mixer = mixerOf(channel.entry, channel.sound);
}

/// The music gives way to the effects that sound.
void AUSAudioPlayer::updateBgAudioVolume() {
    const Entries all = entries();
    for (Channel& channel : channels_)
        if (ExportSound::isMusic(channel.entry))
            channel.mixer.setVolume(
                ExportSound::updateBgAudioAolumeWithTrackMix(all, framesPerSecond_, totalTime()));
}

/// As the export has it: the film lasts a frame longer than it has frames.
float AUSAudioPlayer::totalTime() const {
    if (totalFrames_ < 1) return endlessTime;
    return static_cast<float>(static_cast<double>(totalFrames_ + 1) / framesPerSecond_);
}

// Playing

void AUSAudioPlayer::pauseAudio() {
    const std::lock_guard lock(mutex_);
    isPaused_ = true;
}

void AUSAudioPlayer::resumeAudio() {
    const std::lock_guard lock(mutex_);
    isPaused_ = false;
}

int64_t AUSAudioPlayer::position() const {
    const std::lock_guard lock(mutex_);
    return position_;
}

void AUSAudioPlayer::seek(int64_t sampleFrame) {
    const std::lock_guard lock(mutex_);
    if (sampleFrame == position_) return;
    position_ = mixed_ = sampleFrame;
    limiter_.emplace(highestPeak);
    ready_.clear();
    remakeMixers();
}

void AUSAudioPlayer::read(float* samples, int64_t frames) {
    const std::lock_guard lock(mutex_);
    const auto count = static_cast<size_t>(frames * kAudioChannels);
    if (isPaused_) {
        std::fill_n(samples, count, 0.0F);
        return;
    }
    // The limiter looks ahead, so it is given more than it gives back.
    std::array<float, TrackMixer::kMostFrames * kAudioChannels> block;
    while (ready_.size() < count) {
        mix(block.data(), TrackMixer::kMostFrames);
        limiter_->process(block.data(), TrackMixer::kMostFrames, ready_);
    }
    std::copy_n(ready_.begin(), count, samples);
    ready_.erase(ready_.begin(), ready_.begin() + static_cast<ptrdiff_t>(count));
    position_ += frames;
    dropFinished();
}

void AUSAudioPlayer::mix(float* samples, int64_t frames) {
    std::fill_n(samples, frames * kAudioChannels, 0.0F);
    for (Channel& channel : channels_) channel.mixer.addTo(samples, mixed_, frames);
    filmVolume_.apply(samples, mixed_, frames);
    for (int64_t i = 0; i < frames * kAudioChannels; ++i)
        samples[i] = std::isnan(samples[i]) ? 0 : std::clamp(samples[i], -highestLevel, highestLevel);
    mixed_ += frames;
}

/// A live clip that has sounded to its end removes itself.
void AUSAudioPlayer::dropFinished() {
    if (score_) return;
    const auto isOver = [this](const Channel& channel) { return channel.mixer.end() <= position_; };
    if (std::erase_if(channels_, isOver) > 0) updateBgAudioVolume();
}

}  // namespace multiscene
