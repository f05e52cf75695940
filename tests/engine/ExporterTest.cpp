// Whole exports of small groups: the film, its sound, and how an export ends.
#include <sys/resource.h>

#include <csignal>

#include "platform/audio/AudioFile.h"
#include "platform/media/VideoReader.h"
#include "tests/engine/PlayFixture.h"
#include "tests/engine/SoundFixture.h"
#include "videoRenderCore/QVVideoCVCacheExporter.h"

namespace multiscene {
namespace {

using testing::Dictionary;
using testing::patch;
using testing::Value;
using State = QVVideoCVCacheExporter::State;

struct Listener : QVVideoCVCacheExporterDelegate {
    void videoExporterFinished(QVVideoCVCacheExporter&, const std::string& videoPath) override {
        path = videoPath;
        ++finished;
    }
    void videoExporter(QVVideoCVCacheExporter&, const platform::Error& failedWithError) override {
        error = failedWithError.what();
        ++failed;
    }
    int ends() const { return finished + failed; }
    std::string path, error;
    int finished = 0, failed = 0;
};

class Export : public testing::PlayFixture {
  protected:
    std::shared_ptr<QVVideoCVCacheExporter> exporter(int framesPerSecond = 25) {
        auto made = QVVideoCVCacheExporter::initWithOutputURL(
            film().string(), 64, 48, framesPerSecond,
            {.bitRate = 2000000, .preset = "ultrafast", .threads = 1, .temporaryFolder = folder_});
        made->setDelegate(listener_);
        return made;
    }
    void createExport(const std::shared_ptr<QVVideoCVCacheExporter>& sink) { create(sink, sink); }

    std::filesystem::path film() const { return folder_ / "silent.mp4"; }
    platform::FileHandle open(const std::string& path) const {
        return std::move(platform::FileGate::shared().open(path).file);
    }
    platform::VideoInfo probe(const std::string& path) const {
        return platform::probeVideo(open(path), path);
    }
    Value music(double seconds) const {
        return Value(Dictionary{{"type", "bgAudio"},
                                {"audioPath", testing::writeLevel(folder_ / "music.wav", seconds, 0.5)},
                                {"volume", 1.0},
                                {"fpsStart", 0},
                                {"fpsEnd", 100000}});
    }

    std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
};

TEST_F(Export, FilmIsUprightCompleteAndTheSameEveryTime) {
    addScene(1, 9, {patch("1,0,0,1"), patch("0,0,1,1", "0,24,64,24")});
    play(1);
    std::vector<uint8_t> first;
    for (int pass = 0; pass < 2; ++pass) {
        *listener_ = {};
        const auto sink = exporter();
        createExport(sink);
        start();
        pumpUntil([&] { return listener_->ends() > 0; });
        EXPECT_EQ(listener_->finished, 1) << listener_->error;
        EXPECT_EQ(sink->state(), State::Completed);
        EXPECT_EQ(listener_->path, film());  // no sounds: the silent film itself
        EXPECT_EQ(sink->writerStatistics().frames, 10);
        const auto bytes = platform::readFile(film(), 1 << 24);
        if (pass == 0) first = bytes;
        EXPECT_EQ(bytes, first);
    }
    EXPECT_EQ(probe(film()).durationTicks(), 11 * 600 / 25);  // the first frame is stamped 1/25
    platform::VideoReader reader(open(film()), "film");
    const auto frame = reader.nextFrame();
    ASSERT_TRUE(frame);
    const uint8_t* top = frame->pixels->data() + 4 * 4;
    const uint8_t* bottom = top + frame->pixels->stride() * 40;
    EXPECT_GT(top[0], 200);  // BGRA: the upper half is blue
    EXPECT_LT(top[2], 60);
    EXPECT_GT(bottom[2], 200);
    EXPECT_LT(bottom[0], 60);
}

TEST_F(Export, JoinedFilmHoldsAllFramesAndTheSound) {
    addScene(1, 24);
    play(1);
    const auto sink = exporter();
    sink->addAudioTrackWithInfo(music(0.4));
    createExport(sink);
    start();
    pumpUntil([&] { return listener_->ends() > 0; });
    ASSERT_EQ(listener_->finished, 1) << listener_->error;
    EXPECT_NE(listener_->path, film());
    const auto info = probe(listener_->path);
    EXPECT_TRUE(info.hasAudio);
    EXPECT_EQ(info.frameCount, 25);
    const platform::AudioFile sound(open(listener_->path), "film");
    EXPECT_NEAR(CMTimeGetSeconds(sound.duration()), 26.0 / 25, 0.03);
    settle();
    EXPECT_EQ(listener_->ends(), 1);
}

TEST_F(Export, SoundEffectsStartAtTheFrameOfTheGroup) {
    create(nullptr);
    const auto sink = exporter();
    addScene(1, 3);
    play(1);
    createExport(sink);
    driver_->setFrameSampleBlock([&](int64_t frame) {
        if (frame == 2)
            driver_->startSoundEffect(
                Value(Dictionary{{"type", "audio"}, {"fpsStart", 10}, {"fpsEnd", 40}, {"volume", 0.5}}));
    });
    start();
    pumpUntil([&] { return listener_->ends() > 0; });
    ASSERT_EQ(sink->audioTrackArray().size(), 1u);
    EXPECT_EQ(sink->audioTrackArray()[0].integer("fpsStart"), 2);
    EXPECT_EQ(sink->audioTrackArray()[0].integer("fpsEnd"), 32);
    // The entry names no file, so the silent film is what there is.
    EXPECT_EQ(listener_->path, film());
}

TEST_F(Export, FilmTooShortForItsMixStaysSilentWithoutACall) {
    addScene(1, 2);
    play(1);
    const auto sink = exporter(1000);
    sink->addAudioTrackWithInfo(music(1));
    createExport(sink);
    start();
    pumpUntil([&] { return sink->state() == State::SilentOnly; });
    settle();
    EXPECT_EQ(listener_->ends(), 0);
    EXPECT_EQ(probe(film()).frameCount, 3);
}

TEST_F(Export, StoppingIsToldOnceAndCancellingIsNot) {
    addScene(1, 1000000);
    play(1);
    for (const bool isCancel : {false, true}) {
        *listener_ = {};
        const auto sink = exporter();
        createExport(sink);
        start();
        pumpUntil([&] { return frames_ > 3; });
        if (isCancel) {
            std::atomic<int> cancelled = 0;
            player_->cancelRun([&] { ++cancelled; });
            pumpUntil([&] { return cancelled == 1; });
        } else {
            failures_ = 0;
            sink->stopExport();
            pumpUntil([&] { return failures_ == 1; });  // the driver does not render on
        }
        sink->finishExport();
        sink->stopExport();
        settle();
        EXPECT_EQ(sink->state(), isCancel ? State::Cancelled : State::Failed);
        EXPECT_EQ(listener_->ends(), isCancel ? 0 : 1);
        EXPECT_EQ(listener_->error.find("101111") != std::string::npos, !isCancel);
        player_.reset();
        driver_.reset();
        EXPECT_EQ(liveObjects(), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(film()));
}

/// Lets no file grow beyond a few bytes, as a full disk would.
class FullDisk {
  public:
    FullDisk() {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit tight{100, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

  private:
    rlimit before_{};
};

TEST_F(Export, FirstFailureOfTheEncoderEndsTheRun) {
    addScene(1, 1000000, {patch("1,0.5,0,1", {}, {{"flickers", true}})});
    play(1);
    const auto sink = exporter();
    createExport(sink);
    {
        const FullDisk disk;
        start();
        pumpUntil([&] { return failures_ > 0; });
    }
    settle();
    EXPECT_EQ(failures_, 1);
    EXPECT_EQ(listener_->failed, 1);
    ASSERT_TRUE(error_);
    EXPECT_EQ(listener_->error, error_->what());
    EXPECT_EQ(sink->state(), State::Failed);
}

TEST_F(Export, RestartTakesAFreshFilm) {
    addScene(1, 40);
    play(1);
    const auto sink = exporter();
    sink->addAudioTrackWithInfo(music(0.2));
    createExport(sink);
    std::atomic<bool> isUnderWay = false;
    driver_->setFrameRenderingCompleteBlock([&](int64_t count) {
        if (count == 5 && !isUnderWay.exchange(true)) player_->pauseRun();
    });
    start();
    pumpUntil([&] { return isUnderWay.load(); });
    player_->reStartRender();
    player_->continueRun();
    pumpUntil([&] { return listener_->ends() > 0; });
    EXPECT_EQ(sink->state(), State::Cancelled);
    ASSERT_EQ(listener_->finished, 1) << listener_->error;
    EXPECT_EQ(probe(listener_->path).frameCount, 41);
    EXPECT_TRUE(probe(listener_->path).hasAudio);  // the music goes on to the fresh film
}

}  // namespace
}  // namespace multiscene
