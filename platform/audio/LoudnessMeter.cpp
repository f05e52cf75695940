#include "platform/audio/LoudnessMeter.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>

#include "platform/audio/AudioFile.h"
#include "platform/base/Error.h"

namespace platform {

namespace {

constexpr int64_t kBlockMilliseconds = 400;  // of gating
constexpr double kSilence = -70;             // LUFS, the absolute gate

}  // namespace

struct LoudnessMeter::Implementation {
    Implementation()
        : state(ebur128_init(kAudioChannels, kAudioSampleRate, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK)) {
        if (!state) throw Error(ErrorKind::Transient, "out of memory");
    }
    ~Implementation() { ebur128_destroy(&state); }

    double integrated() const {
        const int64_t milliseconds = frames * 1000 / kAudioSampleRate;
        double loudness = -HUGE_VAL;
        if (milliseconds >= kBlockMilliseconds)
            ebur128_loudness_global(state, &loudness);
        else if (milliseconds > 0)
            ebur128_loudness_window(state, static_cast<unsigned long>(milliseconds), &loudness);
        return loudness;
    }

    double truePeak() const {
        double highest = 0;
        for (unsigned channel = 0; channel < kAudioChannels; ++channel) {
            double peak = 0;
            ebur128_true_peak(state, channel, &peak);
            highest = std::max(highest, peak);
        }
        return highest;
    }

    ebur128_state* state;
    int64_t frames = 0;
};

LoudnessMeter::LoudnessMeter() : implementation_(std::make_unique<Implementation>()) {}
LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(const float* samples, int64_t frames) {
    if (ebur128_add_frames_float(implementation_->state, samples, static_cast<size_t>(frames)) !=
        EBUR128_SUCCESS)
        throw Error(ErrorKind::Transient, "out of memory");
    implementation_->frames += frames;
}

Loudness LoudnessMeter::loudness() const {
    Loudness loudness;
    if (const double integrated = implementation_->integrated(); integrated >= kSilence)
        loudness.integrated = integrated;
    if (const double peak = implementation_->truePeak(); peak > 0) loudness.truePeak = 20 * std::log10(peak);
    return loudness;
}

}  // namespace platform
