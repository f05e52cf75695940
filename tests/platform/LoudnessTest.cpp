#include <cmath>
#include <numbers>

#include "MediaFixture.h"
#include "platform/audio/AudioMix.h"
#include "platform/audio/AudioMixer.h"
#include "platform/audio/LoudnessMeter.h"
#include "platform/audio/TruePeakLimiter.h"

namespace platform {
namespace {

using Samples = std::vector<float>;

constexpr int64_t kSecond = kAudioSampleRate;

double sine(int64_t frame, double hertz) {
    return std::sin(2 * std::numbers::pi * hertz * static_cast<double>(frame) / kAudioSampleRate);
}

double square(int64_t frame, int) { return sine(frame, 220) < 0 ? -0.99 : 0.99; }

template <class Function>
Samples stereo(int64_t frames, Function level) {
    Samples samples;
    for (int64_t i = 0; i < frames; ++i) samples.insert(samples.end(), 2, static_cast<float>(level(i)));
    return samples;
}

Loudness loudnessOf(const Samples& samples) {
    LoudnessMeter meter;
    meter.add(samples.data(), static_cast<int64_t>(samples.size()) / kAudioChannels);
    return meter.loudness();
}

/// In pieces of odd lengths, as a stream comes.
Samples limited(const Samples& samples, float ceiling) {
    TruePeakLimiter limiter(ceiling);
    Samples output;
    const auto frames = static_cast<int64_t>(samples.size()) / kAudioChannels;
    for (int64_t at = 0, step = 1; at < frames; at += step, step = step * 7 % 1021)
        limiter.process(samples.data() + at * kAudioChannels, std::min(step, frames - at), output);
    limiter.finish(output);
    return output;
}

double decibels(double factor) { return 20 * std::log10(factor); }

class LoudnessTest : public MediaFolder {
  protected:
    std::shared_ptr<AudioFile> load(const std::string& name) const {
        return std::make_shared<AudioFile>(open(path(name)), name);
    }
    AudioTimeline timelineOf(int64_t frames, const std::function<double(int64_t, int)>& level) const {
        makeSound("mix.wav", kAudioSampleRate, 2, frames, level);
        AudioTimeline timeline;
        timeline.tracks.resize(1);
        timeline.tracks[0].insertions = {
            {load("mix.wav"), {0, 1, 1, 0}, CMTimeMake(frames, kAudioSampleRate), {0, 1, 1, 0}}};
        return timeline;
    }
    AudioMixReport write(const AudioTimeline& timeline, std::optional<double> loudness) const {
        return writeAudioMix(timeline, path("mix.m4a"), {.loudness = loudness});
    }
    Samples written() const {
        const auto file = load("mix.m4a");
        Samples samples(static_cast<size_t>(file->frameCount()) * 2);
        AudioFile::Reader(*file).read(samples.data(), file->frameCount());
        return samples;
    }
};

}  // namespace

TEST(LoudnessMeterTest, MeasuresWhatTheRecommendationSays) {
    // A stereo sine of 1 kHz at -23 dB full scale has -23 LUFS, whole or less than one block of it.
    const auto tone = [](int64_t i) { return std::pow(10, -23 / 20.0) * sine(i, 1000); };
    EXPECT_NEAR(*loudnessOf(stereo(3 * kSecond, tone)).integrated, -23, 0.1);
    EXPECT_NEAR(*loudnessOf(stereo(kSecond / 10, tone)).integrated, -23, 0.5);
    // A quarter of the sampling rate, sampled beside its peaks: 3 dB higher between the samples.
    const auto between = stereo(kSecond, [](int64_t i) { return i % 4 < 2 ? 0.5 : -0.5; });
    EXPECT_NEAR(*loudnessOf(between).truePeak, decibels(0.5) + 3, 0.2);
    for (const int64_t frames : {int64_t{0}, int64_t{5}, kSecond}) {
        const Loudness silence = loudnessOf(Samples(static_cast<size_t>(frames * 2)));
        EXPECT_FALSE(silence.integrated || silence.truePeak) << frames;
    }
}

TEST(TruePeakLimiterTest, KeepsPeaksUnderTheCeilingAlsoBetweenSamples) {
    constexpr float ceiling = 0.7f;
    const std::vector<Samples> loud{
        stereo(kSecond, [](int64_t i) { return square(i, 0); }),
        stereo(kSecond, [](int64_t i) { return i % 4 < 2 ? 0.6 : -0.6; }),
        stereo(kSecond, [](int64_t i) { return i == 20000 ? 8.0 : 0.1; }),
        stereo(kSecond, [](int64_t i) { return 3 * sine(i, 90) * (i > 22000 && i < 23000); }),
        stereo(kSecond, [](int64_t i) { return i == 0 || i == kSecond - 1 ? 1.0 : 0.0; })};
    for (const Samples& samples : loud) {
        const Samples quieter = limited(samples, ceiling);
        ASSERT_EQ(quieter.size(), samples.size());
        EXPECT_GT(*loudnessOf(samples).truePeak, decibels(ceiling));
        EXPECT_LT(*loudnessOf(quieter).truePeak, decibels(ceiling) + 0.15);
        EXPECT_GT(*loudnessOf(quieter).truePeak, decibels(ceiling) - 1.5) << "no quieter than needed";
    }
}

TEST(TruePeakLimiterTest, LeavesEverythingElseBitForBit) {
    const Samples calm = stereo(3 * kSecond, [](int64_t i) { return 0.69 * sine(i, 440); });
    EXPECT_EQ(limited(calm, 0.7f), calm);
    // Around one peak it goes down and comes back; far away nothing changes.
    Samples peak = calm;
    peak[30000] = 2;
    const Samples after = limited(peak, 0.7f);
    EXPECT_TRUE(std::equal(calm.begin(), calm.begin() + 29400, after.begin()));
    EXPECT_NE(after[29900], peak[29900]);
    EXPECT_EQ(after.back(), calm.back()) << "it has come back up";
}

TEST_F(LoudnessTest, SilenceStaysSilenceAndWhispersAreRaisedWithinReason) {
    const AudioMixReport silence = write(timelineOf(kSecond, [](int64_t, int) { return 0.0; }), -14);
    EXPECT_EQ(silence.gain, 0);
    EXPECT_FALSE(silence.before.integrated || silence.after.integrated);
    for (const float sample : written()) ASSERT_EQ(sample, 0);
    const auto whisper = [](int64_t i, int) { return 0.001 * sine(i, 1000); };
    const AudioMixReport raised = write(timelineOf(kSecond, whisper), -14);
    EXPECT_EQ(raised.gain, kMostGain);
    EXPECT_NEAR(*loudnessOf(written()).integrated, -60 + kMostGain, 0.5);
}

TEST_F(LoudnessTest, AShortLoopIsDecodedOnceAndRunsOn) {
    const auto level = [](int64_t frame, int) { return 0.1 * static_cast<double>(frame % 7); };
    makeSound("loop.wav", kAudioSampleRate, 2, 70, level);
    AudioTimeline timeline;
    timeline.tracks.resize(1);
    timeline.tracks[0].insertions = {{load("loop.wav"), CMTimeMake(14, kAudioSampleRate),
                                      CMTimeMake(40 * kSecond, kAudioSampleRate),
                                      CMTimeMake(3, kAudioSampleRate), true}};
    AudioMixer mixer(timeline);
    Samples samples(static_cast<size_t>(mixer.frameCount()) * 2);
    ASSERT_EQ(mixer.read(samples.data(), 1000), 1000);
    std::filesystem::resize_file(path("loop.wav"), 0);  // nobody reads it any more
    ASSERT_EQ(mixer.read(samples.data() + 2000, mixer.frameCount()), mixer.frameCount() - 1000);
    EXPECT_EQ(samples[4], 0);
    // Rounds begin where the piece does, 14 frames into the file.
    for (int64_t i = 3; i < mixer.frameCount(); ++i)
        ASSERT_NEAR(samples[static_cast<size_t>(2 * i)], level(14 + (i - 3) % 56, 0), 0.001) << i;
}

}  // namespace platform
