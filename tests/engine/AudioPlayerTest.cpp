// What a preview sounds like, beside the export's mix of the same sounds.
#include "videoRenderCore/AUSAudioPlayer.h"

#include <gtest/gtest.h>

#include "output/ExportSound.h"
#include "platform/audio/AudioMixer.h"
#include "platform/base/Paths.h"
#include "tests/engine/SoundFixture.h"
#include "tests/platform/TemporaryFolder.h"

namespace multiscene {
namespace {

using platform::Value;

constexpr int framesPerSecond = 30;
constexpr double level = 0.5;

class AudioPlayerTest : public ::testing::Test {
  protected:
    AudioPlayerTest() { playback_->gate().allowFolder(folder_); }

    Value entry(const std::string& type, double seconds, double volume, int64_t start, int64_t end) const {
        const std::string name = type + std::to_string(start);
        return Value(
            Value::Dictionary{{"type", type},
                              {"audioName", name},
                              {"audioPath", testing::writeLevel(folder_ / (name + ".wav"), seconds, level)},
                              {"volume", volume},
                              {"fpsStart", start},
                              {"fpsEnd", end}});
    }
    std::vector<float> exported(const AUSAudioPlayer::Entries& entries, int64_t frames) {
        const auto timeline = ExportSound::timelineOf(
            entries, framesPerSecond, static_cast<float>(frames + 1) / framesPerSecond, *playback_);
        platform::AudioMixer mixer(timeline);
        std::vector<float> samples(static_cast<size_t>(mixer.frameCount()) * platform::kAudioChannels);
        mixer.read(samples.data(), mixer.frameCount());
        return samples;
    }
    /// Read in pieces of odd sizes, as devices do.
    static std::vector<float> played(AUSAudioPlayer& player, size_t count) {
        std::vector<float> samples(count);
        constexpr size_t piece = 777 * platform::kAudioChannels;
        for (size_t at = 0; at < count; at += piece)
            player.read(samples.data() + at,
                        static_cast<int64_t>(std::min(piece, count - at) / platform::kAudioChannels));
        return samples;
    }
    static float levelNow(AUSAudioPlayer& player) { return played(player, 4410).back() / float{level}; }

    const platform::test::TemporaryFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
    std::shared_ptr<Playback> playback_ = std::make_shared<Playback>();
    AUSAudioPlayer player_{playback_, framesPerSecond};
};

TEST_F(AudioPlayerTest, AScoreSoundsAsTheExportFromAnyPlace) {
    constexpr int64_t frames = 300;
    // Music shorter than the film, an effect longer than its window, two that overlap, one towards the end.
    const AUSAudioPlayer::Entries entries{entry("bgAudio", 3.3, 0.8, 0, 100000),
                                          entry("audio", 2, 0.6, 30, 45), entry("audio", 1, 0.4, 60, 90),
                                          entry("audio", 1, 0.5, 270, 290)};
    const std::vector<float> wanted = exported(entries, frames);
    player_.setTotalFrames(frames);
    // As they become known, one by one.
    for (size_t known = 1; known <= entries.size(); ++known)
        player_.followScore({entries.begin(), entries.begin() + static_cast<ptrdiff_t>(known)});
    EXPECT_EQ(played(player_, wanted.size()), wanted);
    for (const int64_t sampleFrame : {int64_t{44100 * 5 + 17}, int64_t{1}, int64_t{44100 * 9}}) {
        player_.seek(sampleFrame);
        const auto from = static_cast<size_t>(sampleFrame) * platform::kAudioChannels;
        const std::vector<float> rest(wanted.begin() + static_cast<ptrdiff_t>(from), wanted.end());
        EXPECT_EQ(played(player_, rest.size()), rest) << "from sample frame " << sampleFrame;
    }
    player_.deleteChannelWithKey("audio30", false);
    player_.seek(44100 * 3 / 2);
    EXPECT_NEAR(played(player_, 2)[0], wanted[44100 * 3], 1e-6) << "the driver has no say in it";
}

TEST_F(AudioPlayerTest, LiveClipsComeLoopAndGoByTheirKeys) {
    player_.addAudioTrackWithInfo(entry("bgAudio", 60, 1, 0, 100000));
    EXPECT_NEAR(levelNow(player_), 1, 0.01);
    Value clip = entry("audio", 0.05, 0.7, 3, 60).with("isLoop", true);
    player_.addAudioTrackWithInfo(clip);
    // The music gives way to 0.3; both together.
    for (int tenth = 0; tenth < 10; ++tenth) EXPECT_NEAR(levelNow(player_), 1, 0.01) << tenth;
    player_.deleteChannelWithKey("bgAudio0", false);
    EXPECT_NEAR(levelNow(player_), 1, 0.01) << "the music stays";
    player_.deleteChannelWithKey("bgAudio0", true);
    levelNow(player_);
    EXPECT_NEAR(levelNow(player_), 0.7, 0.01) << "still loops";
    player_.pauseAudio();
    const int64_t position = player_.position();
    EXPECT_EQ(levelNow(player_), 0);
    EXPECT_EQ(player_.position(), position);
    player_.resumeAudio();
    player_.deleteChannelWithKey("audio3", false);
    levelNow(player_);  // what was mixed ahead
    EXPECT_EQ(levelNow(player_), 0);
}

}  // namespace
}  // namespace multiscene
