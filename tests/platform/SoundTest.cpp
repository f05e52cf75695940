#include <cmath>

#include "MediaFixture.h"
#include "platform/audio/AudioMix.h"
#include "platform/audio/AudioMixer.h"
#include "platform/media/Join.h"
#include "platform/media/VideoReader.h"

namespace platform {
namespace {

double sine(int64_t frame, int) { return 0.5 * std::sin(static_cast<double>(frame) * 0.0627); }

class SoundTest : public MediaFolder {
  protected:
    static std::shared_ptr<AudioFile> load(const std::string& path) {
        return std::make_shared<AudioFile>(open(path), path);
    }
    static CMTime seconds(double value) { return CMTimeMake(std::llround(value * 1000), 1000); }
    static AudioTimeline oneTrack(std::shared_ptr<const AudioFile> file, double duration) {
        AudioTimeline timeline;
        timeline.tracks.resize(1);
        timeline.tracks[0].insertions = {{file, {0, 1, 1, 0}, seconds(duration), seconds(0)}};
        return timeline;
    }
    static std::vector<float> mixOf(const AudioTimeline& timeline) {
        AudioMixer mixer(timeline);
        std::vector<float> samples(static_cast<size_t>(mixer.frameCount()) * 2);
        EXPECT_EQ(mixer.read(samples.data(), mixer.frameCount() + 1), mixer.frameCount());
        return samples;
    }
    static std::vector<float> decode(const std::string& path) {
        const auto file = load(path);
        std::vector<float> samples(static_cast<size_t>(file->frameCount()) * 2);
        EXPECT_EQ(AudioFile::Reader(*file).read(samples.data(), file->frameCount()), file->frameCount());
        return samples;
    }
    /// Loudness around a time, as a factor of the sine's own.
    static double levelAt(const std::vector<float>& samples, double time) {
        const auto start = static_cast<size_t>((time - 0.01) * 44100) * 2;
        double energy = 0;
        for (size_t i = start; i < start + 1764; ++i) energy += samples.at(i) * samples[i];
        return std::sqrt(energy / 1764) / (0.5 * std::sqrt(0.5));
    }
};

TEST(VolumeEnvelopeTest, StepsHoldAndRampsRule) {
    VolumeEnvelope volume;
    EXPECT_EQ(volume.volumeAtFrame(1000), 1.0f);
    volume.setVolume(0.5f, 100);
    volume.setVolume(0.25f, 200);
    volume.setVolume(0.75f, 200);
    volume.addRamp(1.0f, 0.0f, 300, 200);
    volume.addRamp(1.0f, 0.0f, 400, 400);
    volume.addRamp(0.8f, 0.4f, 500, 700);
    volume.setVolume(0.1f, 600);
    EXPECT_EQ(volume.volumeAtFrame(100 * 441 - 1), 1.0f);
    EXPECT_EQ(volume.volumeAtFrame(100 * 441), 0.5f);
    EXPECT_EQ(volume.volumeAtFrame(450 * 441), 0.75f);
    EXPECT_EQ(volume.volumeAtFrame(500 * 441), 0.8f);
    EXPECT_FLOAT_EQ(volume.volumeAtFrame(650 * 441), 0.5f);
    EXPECT_EQ(volume.volumeAtFrame(900 * 441), 0.4f);
    // What apply() does in stretches is the same.
    std::vector<float> samples(2 * 800 * 441, 1.0f);
    volume.apply(samples.data(), 0, 800 * 441);
    for (int64_t frame = 0; frame < 800 * 441; frame += 37)
        ASSERT_EQ(samples[static_cast<size_t>(2 * frame + 1)], volume.volumeAtFrame(frame)) << frame;
}

TEST_F(SoundTest, FilesOfAnyFormAreStereoAtOneRate) {
    const auto mono = decode(makeSound("mono.wav", 48000, 1, 48000, [](int64_t, int) { return 0.5; }));
    ASSERT_EQ(mono.size(), 2u * 44100);
    EXPECT_NEAR(mono[44100], 0.5, 0.01);
    EXPECT_NEAR(mono[44101], 0.5, 0.01);
    const auto stereo =
        decode(makeSound("stereo.wav", 44100, 2, 441, [](int64_t, int c) { return c ? -0.25 : 0.5; }));
    EXPECT_NEAR(stereo[200], 0.5, 0.001);
    EXPECT_NEAR(stereo[201], -0.25, 0.001);
    EXPECT_THROW(load(write("list.mp3", "#EXTM3U\n" + path("mono.wav") + "\n")), Error);
    EXPECT_THROW(load(makeSound("empty.wav", 44100, 1, 0, sine)), Error);
}

TEST_F(SoundTest, TracksAreAddedPlacedAndScaled) {
    const auto file = load(makeSound("flat.wav", 44100, 1, 44100, [](int64_t, int) { return 0.6; }));
    AudioTimeline timeline = oneTrack(file, 1);
    timeline.tracks[0].volume.setVolume(0.5f, 50);
    timeline.tracks.push_back({{{file, seconds(0.5), seconds(0.6), seconds(0.25)}}, {}});
    timeline.masterVolume.addRamp(1, 0, 80, 100);
    timeline.duration = seconds(2);
    const auto samples = mixOf(timeline);
    ASSERT_EQ(samples.size(), 2u * 88200);
    const auto at = [&](double time) { return samples[static_cast<size_t>(time * 44100) * 2]; };
    EXPECT_NEAR(at(0.2), 0.6, 0.001);
    EXPECT_NEAR(at(0.3), 1.2, 0.001);   // over full scale: what follows sees to that
    EXPECT_NEAR(at(0.6), 0.9, 0.001);   // 0.3 + 0.6
    EXPECT_NEAR(at(0.78), 0.3, 0.001);  // the second piece's file has ended
    EXPECT_NEAR(at(0.9), 0.15, 0.001);  // half way down the fade
    EXPECT_EQ(at(1.5), 0.0f);
}

TEST_F(SoundTest, TheEncodedMixKeepsLengthLevelsAndBytes) {
    AudioTimeline timeline = oneTrack(load(makeSound("sine.wav", 44100, 2, 4 * 44100, sine)), 3.21);
    timeline.tracks[0].volume.setVolume(0.4f, 100);
    timeline.tracks[0].volume.setVolume(1.0f, 150);
    timeline.masterVolume.addRamp(1, 0, 200, 300);
    writeAudioMix(timeline, path("mix.m4v"));
    const auto samples = decode(path("mix.m4v"));
    EXPECT_EQ(samples.size(), 2u * 141561);
    EXPECT_NEAR(levelAt(samples, 0.5), 1.0, 0.03);
    EXPECT_NEAR(levelAt(samples, 1.25), 0.4, 0.03);
    EXPECT_NEAR(levelAt(samples, 1.75), 1.0, 0.03);
    EXPECT_NEAR(levelAt(samples, 2.5), 0.5, 0.03);
    EXPECT_NEAR(levelAt(samples, 3.1), 0.0, 0.01);
    // The encoder's delay is cut off: the sine is where it was.
    for (size_t i = 2000; i < 20000; i += 100)
        ASSERT_NEAR(samples[i], sine(static_cast<int64_t>(i / 2), 0), 0.05);
    writeAudioMix(timeline, path("again.m4v"));
    EXPECT_EQ(bytesOf(path("mix.m4v")), bytesOf(path("again.m4v")));
}

TEST_F(SoundTest, AMixThatEndsEarlyLeavesNoFile) {
    const AudioTimeline timeline = oneTrack(load(makeSound("a.wav", 44100, 1, 4410, sine)), 0.1);
    std::stop_source stop;
    stop.request_stop();
    try {
        writeAudioMix(timeline, path("mix.m4v"), {}, stop.get_token());
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::Cancelled);
    }
    EXPECT_FALSE(std::filesystem::exists(path("mix.m4v")));
    EXPECT_THROW(writeAudioMix({}, path("mix.m4v")), Error);
}

TEST_F(SoundTest, TheJoinCopiesTheFilmAndCutsTheSound) {
    const std::string film = makeFilm("film.mp4", 30, small(64, 48, 30));
    writeAudioMix(oneTrack(load(makeSound("a.wav", 44100, 1, 3 * 44100, sine)), 3), path("mix.m4v"));
    joinVideoAndAudio(film, path("mix.m4v"), path("out.mp4"));
    EXPECT_EQ(packetsOf(path("out.mp4"), AVMEDIA_TYPE_VIDEO, 30000),
              packetsOf(film, AVMEDIA_TYPE_VIDEO, 30000));

    const auto whole = packetsOf(path("mix.m4v"), AVMEDIA_TYPE_AUDIO, 44100);
    const auto sound = packetsOf(path("out.mp4"), AVMEDIA_TYPE_AUDIO, 44100);
    ASSERT_LT(sound.size(), whole.size());
    for (size_t i = 0; i < sound.size(); ++i) ASSERT_EQ(sound[i].bytes, whole[i].bytes) << i;
    EXPECT_EQ(sound[0].pts, -1024);
    EXPECT_EQ(sound.back().pts + sound.back().duration, 31 * 44100 / 30);
    EXPECT_EQ(load(path("out.mp4"))->frameCount(), 30 * 44100 / 30) << "from the first picture on";
    EXPECT_TRUE(probeVideo(open(path("out.mp4")), "out").hasAudio);

    const std::string bytes = bytesOf(path("out.mp4"));
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat"));
    joinVideoAndAudio(film, path("mix.m4v"), path("again.mp4"));
    EXPECT_EQ(bytes, bytesOf(path("again.mp4")));
}

TEST_F(SoundTest, AFailedJoinLeavesNoFile) {
    const std::string film = makeFilm("film.mp4", 3, small());
    EXPECT_THROW(joinVideoAndAudio(film, film, path("out.mp4")), Error);
    writeAudioMix(oneTrack(load(makeSound("a.wav", 44100, 1, 4410, sine)), 0.1), path("mix.m4v"));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(joinVideoAndAudio(film, path("mix.m4v"), path("out.mp4"), stop.get_token()), Error);
    EXPECT_FALSE(std::filesystem::exists(path("out.mp4")));
}

}  // namespace
}  // namespace platform
