// What a preview sounds like. Glossary: "Bg" is background, the music.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "output/SoundFiles.h"
#include "output/SoundSink.h"
#include "platform/audio/TrackMixer.h"
#include "platform/audio/TruePeakLimiter.h"
#include "platform/audio/VolumeEnvelope.h"

namespace multiscene {

/// A channel for each sound on the time line of the group, which starts at frame 0; the volumes are those of
/// the exported mix, by the same code (ExportSound). It has no device: whoever has one reads the samples.
///
/// Live, sounds come and go as the driver tells: a clip that loops does so as long as its window, and the end
/// of its window ends it. With a score, the sounds of the whole group are known beforehand, and what is heard
/// is the exported mix, sample by sample, from wherever it is listened to: sounds that are longer than their
/// window play to their end, and nothing loops but the music.
///
/// Any thread.
class AUSAudioPlayer : public SoundSink {
  public:
    using Entries = std::vector<platform::Value>;

    /// `framesPerSecond`: of the group.
    AUSAudioPlayer(std::shared_ptr<Playback> playback, int32_t framesPerSecond);

    /// How long the group is; its sounds fade towards its end. Below 1: not known, and they do not.
    void setTotalFrames(int64_t frames);
    /// From now on these are the sounds, whatever the driver tells. Those that sound already go on.
    void followScore(const Entries& entries);

    // SoundSink
    void addAudioTrackWithInfo(const platform::Value& info) override;
    void deleteChannelWithKey(const std::string& audioName, bool isBgAudio) override;
    void pauseAudio() override;
    void resumeAudio() override;

    /// Goes on from a sample frame of the time line.
    void seek(int64_t sampleFrame);
    int64_t position() const;
    /// The next sample frames, interleaved stereo at kAudioSampleRate; none of the time line while paused,
    /// but silence. No true peak is over that of exported sound.
    void read(float* samples, int64_t frames);

  private:
    struct Channel {
        platform::Value entry;
        SoundFiles::Sound sound;
        platform::TrackMixer mixer;
    };

    float totalTime() const;
    Entries entries() const;
    bool addChannel(const platform::Value& entry);
    platform::TrackMixer mixerOf(const platform::Value& entry, const SoundFiles::Sound& sound) const;
    void remakeMixers();
    void updateBgAudioVolume();
    void mix(float* samples, int64_t frames);
    void dropFinished();

    const std::shared_ptr<Playback> playback_;
    const int32_t framesPerSecond_;
    mutable std::mutex mutex_;
    SoundFiles files_;
    std::vector<Channel> channels_;
    platform::VolumeEnvelope filmVolume_;
    int64_t totalFrames_ = 0, position_ = 0, mixed_ = 0;  ///< sample frames given out, and mixed
    std::optional<Entries> score_;
    bool isPaused_ = false;
    std::optional<platform::TruePeakLimiter> limiter_;
    std::vector<float> ready_;  ///< limited, not given out yet
};

}  // namespace multiscene
