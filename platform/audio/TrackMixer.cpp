#include "platform/audio/TrackMixer.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/audio/SoundLoop.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace platform {

namespace {

using Block = std::array<float, TrackMixer::kMostFrames * kAudioChannels>;

void addOnto(float* sum, const float* samples, int64_t frames) {
    for (int64_t i = 0; i < frames * kAudioChannels; ++i) sum[i] += samples[i];
}

}  // namespace

int64_t sampleFramesOf(const CMTime& time) {
    if (time.timescale <= 0) return 0;
    return av_rescale_rnd(time.value, kAudioSampleRate, time.timescale, AV_ROUND_NEAR_INF);
}

/// A piece of a file on the timeline. Its decoder exists only while it sounds.
class TrackMixer::Piece {
  public:
    explicit Piece(const AudioInsertion& insertion)
        : insertion_(&insertion),
          start_(sampleFramesOf(insertion.at)),
          end_(start_ + std::max<int64_t>(sampleFramesOf(insertion.duration), 0)) {}

    int64_t start() const { return start_; }
    int64_t end() const { return end_; }

    /// Adds what sounds from `frame` on to `sum`. Called for one block after another; the first may lie
    /// anywhere.
    void addTo(float* sum, int64_t frame, int64_t frames) {
        const int64_t from = std::max(frame, start_), to = std::min(frame + frames, end_);
        if (from >= to) return;
        Block samples;
        const int64_t got = read(samples.data(), to - from, from);
        addOnto(sum + (from - frame) * kAudioChannels, samples.data(), got);
    }

  private:
    int64_t read(float* samples, int64_t frames, int64_t from) {
        const int64_t skipped = sampleFramesOf(insertion_->sourceStart);
        if (insertion_->isLooped) {
            if (!loop_)
                (loop_ = std::make_unique<SoundLoop>(*insertion_->file, skipped))->skip(from - start_);
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

TrackMixer::TrackMixer(const AudioTrack& track) : track_(track) {
    for (const AudioInsertion& insertion : track_.insertions) waiting_.emplace_back(insertion);
    std::stable_sort(waiting_.begin(), waiting_.end(),
                     [](const Piece& a, const Piece& b) { return a.start() > b.start(); });
    for (const Piece& piece : waiting_) end_ = std::max(end_, piece.end());
}

TrackMixer::~TrackMixer() = default;
TrackMixer::TrackMixer(TrackMixer&&) noexcept = default;
TrackMixer& TrackMixer::operator=(TrackMixer&&) noexcept = default;

void TrackMixer::addTo(float* sum, int64_t frame, int64_t frames) {
    for (; !waiting_.empty() && waiting_.back().start() < frame + frames; waiting_.pop_back())
        sounding_.push_back(std::move(waiting_.back()));
    std::erase_if(sounding_, [&](const Piece& piece) { return piece.end() <= frame; });
    if (sounding_.empty()) return;
    Block samples{};
    for (Piece& piece : sounding_) piece.addTo(samples.data(), frame, frames);
    track_.volume.apply(samples.data(), frame, frames);
    for (const VolumeEnvelope& fade : track_.fades) fade.apply(samples.data(), frame, frames);
    addOnto(sum, samples.data(), frames);
}

}  // namespace platform
