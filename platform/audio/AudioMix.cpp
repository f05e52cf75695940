#include "platform/audio/AudioMix.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>

#include "platform/audio/AacWriter.h"
#include "platform/audio/AudioMixer.h"
#include "platform/audio/TruePeakLimiter.h"

namespace platform {

namespace {

// Encoding moves peaks. A mix that must be limited leaves this room (dB); if it is not enough, another round
// takes the rest.
constexpr double kRoomForEncoding = 0.5, kSpare = 0.05;
constexpr double kLoudEnough = 0.2;                  // LU beside the loudness asked for
constexpr int kLoudnessRounds = 5, kMostRounds = 7;  // the last ones are left to the peaks

using Block = std::array<float, AacWriter::kBlockFrames * kAudioChannels>;

float factorOf(double decibels) { return static_cast<float>(std::pow(10, decibels / 20)); }

void requireGoingOn(const std::stop_token& stop) {
    if (stop.stop_requested()) throw Error(ErrorKind::Cancelled, "cancelled");
}

/// What is done to all of a mix, in dB.
struct Treatment {
    double gain = 0;
    std::optional<double> ceiling;  ///< true peak; none: no limiter
};

/// Cuts sound into the encoder's blocks.
class BlockWriter {
  public:
    BlockWriter(const std::filesystem::path& output, int bitRate) : writer_(output, bitRate) {}

    std::vector<float>& pending() { return pending_; }
    void writeBlocks() {
        constexpr size_t block = AacWriter::kBlockFrames * kAudioChannels;
        size_t done = 0;
        for (; pending_.size() - done >= block; done += block)
            writer_.write(pending_.data() + done, AacWriter::kBlockFrames);
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(done));
    }
    void finish() {
        writeBlocks();
        if (!pending_.empty())
            writer_.write(pending_.data(), static_cast<int64_t>(pending_.size()) / kAudioChannels);
        writer_.finish();
    }

  private:
    AacWriter writer_;
    std::vector<float> pending_;
};

class MixWriter {
  public:
    MixWriter(const AudioTimeline& timeline, const std::filesystem::path& output,
              const AudioMixSettings& settings, const std::stop_token& stop)
        : timeline_(timeline), output_(output), settings_(settings), stop_(stop) {}

    AudioMixReport write() {
        report_.before = measureMix();
        chooseTreatment();
        encode();
        report_.after = measureFile();
        for (int round = 1; round < kMostRounds && improve(round < kLoudnessRounds); ++round) {
            encode();
            report_.after = measureFile();
        }
        report_.gain = treatment_.gain;
        report_.isLimited = treatment_.ceiling.has_value();
        return report_;
    }

  private:
    void chooseTreatment() {
        if (settings_.loudness && report_.before.integrated)
            treatment_.gain = std::min(*settings_.loudness - *report_.before.integrated, kMostGain);
        if (report_.before.truePeak.value_or(-HUGE_VAL) + treatment_.gain > kHighestTruePeak)
            treatment_.ceiling = kHighestTruePeak - kRoomForEncoding;
    }

    /// Changes the treatment by what the file has too much or too little; false when nothing is left to do.
    bool improve(bool mayCorrect) {
        const double excess = report_.after.truePeak.value_or(-HUGE_VAL) - kHighestTruePeak;
        if (excess > 0) treatment_.ceiling = treatment_.ceiling.value_or(kHighestTruePeak) - excess - kSpare;
        return (mayCorrect && correctLoudness()) || excess > 0;
    }

    /// Limiting takes loudness away, and encoding a little.
    bool correctLoudness() {
        if (!settings_.loudness || !report_.after.integrated) return false;
        const double missing = *settings_.loudness - *report_.after.integrated;
        const double gain = std::min(treatment_.gain + missing, kMostGain);
        if (std::abs(missing) < kLoudEnough || gain == treatment_.gain) return false;
        treatment_.gain = gain;
        return true;
    }

    Loudness measureMix() {
        AudioMixer mixer(timeline_);
        LoudnessMeter meter;
        Block samples;
        while (const int64_t frames = mixer.read(samples.data(), AacWriter::kBlockFrames)) {
            requireGoingOn(stop_);
            meter.add(samples.data(), frames);
        }
        return meter.loudness();
    }

    Loudness measureFile() {
        FileHandle written = openFile(output_, O_RDONLY);
        if (!written) throw errnoError(errno, "cannot be read", output_.string());
        const AudioFile file(std::move(written), output_.string(), ErrorKind::Failed);
        AudioFile::Reader reader(file);
        LoudnessMeter meter;
        Block samples;
        while (const int64_t frames = reader.read(samples.data(), AacWriter::kBlockFrames)) {
            requireGoingOn(stop_);
            meter.add(samples.data(), frames);
        }
        return meter.loudness();
    }

    void encode() {
        AudioMixer mixer(timeline_);
        BlockWriter writer(output_, settings_.bitRate);
        std::optional<TruePeakLimiter> limiter;
        if (treatment_.ceiling) limiter.emplace(factorOf(*treatment_.ceiling));
        const float gain = factorOf(treatment_.gain);
        Block samples;
        while (const int64_t frames = mixer.read(samples.data(), AacWriter::kBlockFrames)) {
            requireGoingOn(stop_);
            const auto end = samples.begin() + frames * kAudioChannels;
            for (auto sample = samples.begin(); sample != end; ++sample) *sample *= gain;
            if (limiter)
                limiter->process(samples.data(), frames, writer.pending());
            else
                writer.pending().insert(writer.pending().end(), samples.begin(), end);
            writer.writeBlocks();
        }
        if (limiter) limiter->finish(writer.pending());
        writer.finish();
    }

    const AudioTimeline& timeline_;
    const std::filesystem::path& output_;
    const AudioMixSettings& settings_;
    const std::stop_token& stop_;
    Treatment treatment_;
    AudioMixReport report_;
};

}  // namespace

AudioMixReport writeAudioMix(const AudioTimeline& timeline, const std::filesystem::path& output,
                             const AudioMixSettings& settings, std::stop_token stop) {
    if (AudioMixer(timeline).frameCount() == 0) throw Error(ErrorKind::Failed, "there is no sound to mix");
    try {
        return MixWriter(timeline, output, settings, stop).write();
    } catch (...) {
        std::error_code ignored;
        std::filesystem::remove(output, ignored);
        throw;
    }
}

}  // namespace platform
