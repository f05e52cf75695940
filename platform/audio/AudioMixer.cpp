#include "platform/audio/AudioMixer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "platform/audio/SoundLoop.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace platform {

namespace {

constexpr int64_t kBlockFrames = 1024;
constexpr float kHighestLevel = 16;  // far over full scale; files of floats may hold anything
using Block = std::array<float, kBlockFrames * kAudioChannels>;

int64_t framesOf(const CMTime& time) {
    if (time.timescale <= 0) return 0;
    return av_rescale_rnd(time.value, kAudioSampleRate, time.timescale, AV_ROUND_NEAR_INF);
}

void addOnto(float* sum, const float* samples, int64_t frames) {
    for (int64_t i = 0; i < frames * kAudioChannels; ++i) sum[i] += samples[i];
}

/// A piece of a file on the timeline. Its decoder exists only while it sounds.
class Piece {
  public:
    explicit Piece(const AudioInsertion& insertion)
        : insertion_(&insertion),
          start_(framesOf(insertion.at)),
          end_(start_ + std::max<int64_t>(framesOf(insertion.duration), 0)) {}

    int64_t start() const { return start_; }
    int64_t end() const { return end_; }

    /// Adds what sounds from `frame` on to `sum`. Called for one block after another.
    void addTo(float* sum, int64_t frame, int64_t frames) {
        const int64_t from = std::max(frame, start_), to = std::min(frame + frames, end_);
        if (from >= to) return;
        Block samples;
        const int64_t got = read(samples.data(), to - from, from);
        addOnto(sum + (from - frame) * kAudioChannels, samples.data(), got);
    }

  private:
    int64_t read(float* samples, int64_t frames, int64_t from) {
        const int64_t skipped = framesOf(insertion_->sourceStart);
        if (insertion_->isLooped) {
            if (!loop_) loop_ = std::make_unique<SoundLoop>(*insertion_->file, skipped);
            loop_->read(samples, frames);
            return frames;
        }
        if (!reader_) reader_.emplace(*insertion_->file).skip(skipped + from - start_);
        return reader_->read(samples, frames);
    }

    const AudioInsertion* insertion_;
    int64_t start_, end_;
    std::optional<AudioFile::Reader> reader_;
    std::unique_ptr<SoundLoop> loop_;
};

/// One track: its pieces in the order of their starts, and those of them that sound at the moment.
class TrackMixer {
  public:
    explicit TrackMixer(const AudioTrack& track) : track_(track) {
        for (const AudioInsertion& insertion : track.insertions) waiting_.emplace_back(insertion);
        std::stable_sort(waiting_.begin(), waiting_.end(),
                         [](const Piece& a, const Piece& b) { return a.start() > b.start(); });
        for (const Piece& piece : waiting_) end_ = std::max(end_, piece.end());
    }

    int64_t end() const { return end_; }

    void addTo(float* sum, int64_t frame, int64_t frames) {
        for (; !waiting_.empty() && waiting_.back().start() < frame + frames; waiting_.pop_back())
            sounding_.push_back(std::move(waiting_.back()));
        if (sounding_.empty()) return;
        Block samples{};
        for (Piece& piece : sounding_) piece.addTo(samples.data(), frame, frames);
        std::erase_if(sounding_, [&](const Piece& piece) { return piece.end() <= frame + frames; });
        track_.volume.apply(samples.data(), frame, frames);
        for (const VolumeEnvelope& fade : track_.fades) fade.apply(samples.data(), frame, frames);
        addOnto(sum, samples.data(), frames);
    }

  private:
    const AudioTrack& track_;
    std::vector<Piece> waiting_;  ///< the next one last
    std::vector<Piece> sounding_;
    int64_t end_ = 0;
};

}  // namespace

struct AudioMixer::Implementation {
    explicit Implementation(const AudioTimeline& timeline) : masterVolume(timeline.masterVolume) {
        for (const AudioTrack& track : timeline.tracks) tracks.emplace_back(track);
        frameCount = framesOf(timeline.duration);
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
        const int64_t now = std::min({frames - done, self.frameCount - self.position, kBlockFrames});
        self.mix(samples + done * kAudioChannels, now);
        done += now;
    }
    return done;
}

}  // namespace platform
