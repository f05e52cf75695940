#include "platform/audio/AudioMixer.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "platform/audio/TrackMixer.h"
#include "platform/base/Limits.h"

namespace platform {

namespace {

constexpr float kHighestLevel = 16;  // far over full scale; files of floats may hold anything

/// Each sound that is heard has a decoder and an open file of its own.
void requireFewAtOnce(const AudioTimeline& timeline) {
    constexpr auto most = limitOf<size_t>("maxSoundsAtOnce");
    std::vector<const AudioInsertion*> pieces;
    for (const AudioTrack& track : timeline.tracks)
        for (const AudioInsertion& piece : track.insertions) pieces.push_back(&piece);
    if (pieces.size() <= most) return;
    std::ranges::sort(pieces, {}, [](const AudioInsertion* piece) { return sampleFramesOf(piece->at); });
    std::multiset<int64_t> ends;  // of those that are heard
    for (const AudioInsertion* piece : pieces) {
        const int64_t start = sampleFramesOf(piece->at);
        ends.erase(ends.begin(), ends.upper_bound(start));
        ends.insert(start + std::max<int64_t>(sampleFramesOf(piece->duration), 0));
        if (ends.size() > most)
            throw Error(ErrorKind::Template,
                        "is heard at one time with " + std::to_string(most) +
                            " others or more; that many sounds at one time are allowed",
                        piece->file->name());
    }
}

}  // namespace

struct AudioMixer::Implementation {
    explicit Implementation(const AudioTimeline& timeline) : masterVolume(timeline.masterVolume) {
        requireFewAtOnce(timeline);
        for (const AudioTrack& track : timeline.tracks) tracks.emplace_back(track);
        frameCount = sampleFramesOf(timeline.duration);
        if (frameCount > 0) return;
        for (const TrackMixer& track : tracks) frameCount = std::max(frameCount, track.end());
    }

    void mix(float* samples, int64_t frames) {
        std::fill_n(samples, frames * kAudioChannels, 0.0f);
        for (TrackMixer& track : tracks) track.addTo(samples, position, frames);
        masterVolume.apply(samples, position, frames);
        for (int64_t i = 0; i < frames * kAudioChannels; ++i)
            samples[i] = std::isnan(samples[i]) ? 0 : std::clamp(samples[i], -kHighestLevel, kHighestLevel);
        position += frames;
    }

    const VolumeEnvelope& masterVolume;
    std::vector<TrackMixer> tracks;
    int64_t frameCount = 0, position = 0;
};

AudioMixer::AudioMixer(const AudioTimeline& timeline)
    : implementation_(std::make_unique<Implementation>(timeline)) {}
AudioMixer::~AudioMixer() = default;

int64_t AudioMixer::frameCount() const { return implementation_->frameCount; }

int64_t AudioMixer::read(float* samples, int64_t frames) {
    Implementation& self = *implementation_;
    int64_t done = 0;
    while (done < frames && self.position < self.frameCount) {
        const int64_t now =
            std::min({frames - done, self.frameCount - self.position, TrackMixer::kMostFrames});
        self.mix(samples + done * kAudioChannels, now);
        done += now;
    }
    return done;
}

}  // namespace platform
