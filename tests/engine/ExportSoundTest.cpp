// What is heard in an exported film, measured on the mixed samples.
#include "output/ExportSound.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/audio/AudioMixer.h"
#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "report/RenderReport.h"
#include "tests/engine/SoundFixture.h"
#include "tests/platform/TemporaryFolder.h"

namespace multiscene {
namespace {

using platform::Value;

constexpr double level = 0.5;

class ExportSoundTest : public ::testing::Test {
  protected:
    ExportSoundTest() { playback_.gate().allowFolder(folder_); }

    Value music(double seconds) const {
        const std::string path = testing::writeLevel(folder_ / "music.wav", seconds, level);
        return Value(Value::Dictionary{
            {"type", "bgAudio"}, {"audioPath", path}, {"volume", 1.0}, {"fpsStart", 0}, {"fpsEnd", 100000}});
    }
    Value effect(double seconds, double volume, int64_t start, int64_t end) const {
        const std::string path = testing::writeLevel(folder_ / "effect.wav", seconds, level);
        return Value(Value::Dictionary{{"type", "audio"},
                                       {"audioPath", path},
                                       {"volume", volume},
                                       {"fpsStart", start},
                                       {"fpsEnd", end}});
    }

    /// The mix as it is heard, one value a hundredth of a second, 1 being the sounds' own level.
    std::vector<double> hear(const ExportSound::Entries& entries, int32_t framesPerSecond, float totalTime) {
        const auto timeline = ExportSound::timelineOf(entries, framesPerSecond, totalTime, playback_);
        platform::AudioMixer mixer(timeline);
        std::vector<double> heard;
        std::vector<float> block(441 * platform::kAudioChannels);
        while (mixer.read(block.data(), 441) == 441) heard.push_back(block[0] / level);
        return heard;
    }

    Playback playback_;
    const platform::test::TemporaryFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
};

TEST_F(ExportSoundTest, MusicGivesWayByTheMeanVolumeOfTheEffects) {
    const auto entry = [](double volume, int64_t start, int64_t end) {
        return Value(Value::Dictionary{{"volume", volume}, {"fpsStart", start}, {"fpsEnd", end}});
    };
    const ExportSound::Entries two{entry(0.4, 0, 20), entry(0.8, 10, 30)};
    EXPECT_FLOAT_EQ(ExportSound::volumeWithFps(15, two), 0.4f);
    EXPECT_FLOAT_EQ(ExportSound::volumeWithFps(20, two), 0.2f);  // the end is not part of the window
    EXPECT_FLOAT_EQ(ExportSound::volumeWithFps(30, two), 1.0f);
    EXPECT_FLOAT_EQ(ExportSound::volumeWithFps(3, {entry(1.0, 0, 5)}), 0.0f);
    EXPECT_FLOAT_EQ(
        ExportSound::volumeWithFps(3, {entry(0.5, 0, 5).with("type", "bgAudio"), entry(0.2, 0, 5)}), 0.8f);
}

TEST_F(ExportSoundTest, PlacesAreHundredthsOfASecondCutOff) {
    EXPECT_EQ(ExportSound::hundredthsOfFrame(1, 30), 3);
    EXPECT_EQ(ExportSound::hundredthsOfFrame(250, 25), 1000);
    EXPECT_EQ(ExportSound::hundredthsOfFrame(29, 100), 29);  // 0.29 is not quite 0.29
    EXPECT_GT(ExportSound::hundredthsOfFrame(INT64_MAX, 1), 0);
}

TEST_F(ExportSoundTest, MusicLoopsEndToEndAndStopsWithTheFilm) {
    const auto heard = hear({music(1)}, 25, 4);
    EXPECT_NEAR(static_cast<double>(heard.size()), 400, 1);
    for (size_t i = 0; i < 399; ++i) ASSERT_NEAR(heard[i], 1, 0.001) << i;  // no gap at a seam, no fade
}

TEST_F(ExportSoundTest, MusicHasItsOwnVolumeStartAndFadesBesides) {
    const auto with = [&](const char* key, double value) { return music(10).with(key, value); };
    EXPECT_NEAR(hear({with("volume", 0.25)}, 25, 4)[200], 0.25, 0.001);
    const auto fading = hear({with("fadeInSeconds", 1).with("fadeOutSeconds", 2)}, 25, 4);
    EXPECT_NEAR(fading[0], 0, 0.01);
    EXPECT_NEAR(fading[50], 0.5, 0.01);
    EXPECT_NEAR(fading[150], 1, 0.01);
    EXPECT_NEAR(fading[300], 0.5, 0.01);
    // Both longer than the film: they meet in its middle.
    EXPECT_NEAR(hear({with("fadeInSeconds", 99).with("fadeOutSeconds", 99)}, 25, 4)[200], 0.25, 0.01);
    // An effect keeps its volume, and the fade of a long film stays.
    const auto long12 = hear({with("volume", 0), effect(12, 1, 0, 300)}, 25, 12);
    EXPECT_NEAR(long12[750], 1, 0.005);
    EXPECT_NEAR(long12[1000], 0.5, 0.005);
}

TEST_F(ExportSoundTest, LongFilmsFadeTwice) {
    const auto heard = hear({music(12)}, 25, 12);
    // Music: down from 7 s on. Film: down from 8 s on.
    const auto expected = [](double second) {
        const double ofMusic = second < 7 ? 1 : (12 - second) / 5;
        const double ofFilm = second < 8 ? 1 : (12 - second) / 4;
        return ofMusic * ofFilm;
    };
    for (size_t i = 0; i < 1199; ++i)
        ASSERT_NEAR(heard[i], expected(static_cast<double>(i) / 100), 0.005) << i;
    // An effect alone has the film's fade only.
    const auto effectAlone = hear({effect(12, 1, 0, 300)}, 25, 12);
    EXPECT_NEAR(effectAlone[750], 1, 0.005);
    EXPECT_NEAR(effectAlone[1000], 0.5, 0.005);
}

TEST_F(ExportSoundTest, EffectPlaysToItsEndAndDucksTheMusicInItsWindow) {
    // A 2 s sound from frame 25 on with a window of 1 s, at 25 frames a second.
    const auto heard = hear({music(4), effect(2, 0.4, 25, 50)}, 25, 4);
    EXPECT_NEAR(heard[99], 1, 0.001);
    EXPECT_NEAR(heard[100], 0.6 + 0.4, 0.001);
    EXPECT_NEAR(heard[199], 0.6 + 0.4, 0.001);
    EXPECT_NEAR(heard[200], 1 + 0.4, 0.001);
    EXPECT_NEAR(heard[299], 1 + 0.4, 0.001);
    EXPECT_NEAR(heard[301], 1, 0.001);
    const auto skipped = playback_.report().entries();
    ASSERT_EQ(skipped.size(), 1u);
    EXPECT_NE(skipped[0].what.find("plays to its end"), std::string::npos);
    EXPECT_FALSE(skipped[0].isLeftOut);
}

TEST_F(ExportSoundTest, WindowsWithoutLengthAndVolumesBeyondTheRangeStayHarmless) {
    EXPECT_NEAR(hear({effect(1, 0.2, 25, 25)}, 25, 4)[150], 0.2, 0.001);
    const auto drowned = hear({music(4), effect(0.1, 3, 25, 50)}, 25, 4);
    EXPECT_NEAR(drowned[99], 1, 0.001);
    EXPECT_NEAR(drowned[150], 0, 0.001) << "not upside down";
}

TEST_F(ExportSoundTest, MusicFadesOnlyAfterTheLastRegisteredEffect) {
    // The effect ends at 9 s of 12, so the fade begins there; the film's own fade is divided out.
    const auto heard = hear({music(12), effect(0.1, 0.5, 200, 225)}, 25, 12);
    EXPECT_NEAR(heard[950] / (2.5 / 4), 2.5 / 3, 0.01);
    // An effect that ends after the film leaves no fade of the music: the ramp would be inverted.
    const auto late = hear({music(12), effect(0.1, 0.5, 200, 400)}, 25, 12);
    EXPECT_NEAR(late[950] / (2.5 / 4), 0.5, 0.01);
}

TEST_F(ExportSoundTest, SoundsThatCannotBeReadAreLeftOutAndTheFenceHolds) {
    const auto named = [](const std::string& path) {
        return Value(Value::Dictionary{{"audioPath", path}, {"volume", 1}, {"fpsStart", 0}, {"fpsEnd", 9}});
    };
    std::ofstream(folder_ / "noise.mp3") << "this is no sound";
    const auto timeline = ExportSound::timelineOf({named(folder_ / "none.wav"), named(folder_ / "noise.mp3")},
                                                  25, 2, playback_);
    EXPECT_TRUE(timeline.tracks.empty());
    EXPECT_EQ(playback_.report().entries().size(), 2u);
    EXPECT_THROW(ExportSound::timelineOf({named("/etc/hostname")}, 25, 2, playback_), platform::Error);
}

}  // namespace
}  // namespace multiscene
