// Whole exports of small groups: the film, its sound, and how an export ends.
#include <sys/resource.h>

#include <csignal>
#include <semaphore>
#include <thread>

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
    Export() { renderer_ = Renderer::GL; }

    std::shared_ptr<QVVideoCVCacheExporter> exporter(int framesPerSecond = 25) {
        auto made = QVVideoCVCacheExporter::initWithOutputURL(film().string(), 64, 48, framesPerSecond,
                                                              {.playback = playback_,
                                                               .bitRate = 2000000,
                                                               .preset = "ultrafast",
                                                               .threads = 1,
                                                               .temporaryFolder = folder_});
        made->setDelegate(listener_);
        return made;
    }
    void createExport(const std::shared_ptr<QVVideoCVCacheExporter>& sink) { create(sink, sink); }

    std::filesystem::path film() const { return folder_ / "silent.mp4"; }
    platform::FileHandle open(const std::string& path) const {
        return std::move(playback_->gate().open(path).file);
    }
    platform::VideoInfo probe(const std::string& path) const {
        return platform::probeVideo(open(path), path);
    }
    /// The sound of a film, one level a hundredth of a second; it is read from the first picture on, which is
    /// stamped 1/25.
    std::vector<float> levelsOf(const std::string& path) const {
        const platform::AudioFile sound(open(path), path);
        platform::AudioFile::Reader reader(sound);
        std::vector<float> levels(4), block(441 * platform::kAudioChannels);
        while (reader.read(block.data(), 441) == 441) levels.push_back(block[0]);
        return levels;
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

TEST_F(Export, FilmIsUprightAndComplete) {
    addScene(1, 9, {patch("1,0,0,1"), patch("0,0,1,1", "0,24,64,24")});
    play(1);
    const auto sink = exporter();
    createExport(sink);
    start();
    pumpUntil([&] { return listener_->ends() > 0; });
    EXPECT_EQ(listener_->finished, 1) << listener_->error;
    EXPECT_EQ(sink->state(), State::Completed);
    EXPECT_EQ(listener_->path, film());  // no sounds: the silent film itself
    EXPECT_EQ(sink->writerStatistics().frames, 10);
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

TEST_F(Export, SoundEffectsOfLaterScenesDuckTheMusicAtTheFramesOfTheGroup) {
    // A silent effect, so that only the music is heard, in frames 5 to 15 of a scene that starts at frame 10.
    const Value effect(Dictionary{{"type", "QVObject3DSoundSourceComponent"},
                                  {"startFps", 5},
                                  {"endFps", 15},
                                  {"audioFilePath", testing::writeLevel(folder_ / "hush.wav", 0.2, 0)},
                                  {"audioVolume", 0.6},
                                  {"audioKey", "hush"}});
    addScene(1, 9);
    addScene(2, 25, {patch("1,0,0,1", {}, {{"ComponentsInfo", Value(Value::Array{effect})}})});
    play(1);
    play(2);
    const auto sink = exporter();
    sink->addAudioTrackWithInfo(music(4));
    createExport(sink);
    start();
    pumpUntil([&] { return listener_->ends() > 0; });
    ASSERT_EQ(listener_->finished, 1) << listener_->error;
    ASSERT_EQ(sink->audioTrackArray().size(), 2u);
    EXPECT_EQ(sink->audioTrackArray()[1].integer("fpsStart"), 15);
    EXPECT_EQ(sink->audioTrackArray()[1].integer("fpsEnd"), 25);
    const auto heard = levelsOf(listener_->path);
    ASSERT_GT(heard.size(), 130u);
    for (const size_t before : {30u, 58u}) EXPECT_NEAR(heard[before], 0.5, 0.02) << before;
    for (const size_t inside : {62u, 80u, 98u}) EXPECT_NEAR(heard[inside], 0.2, 0.02) << inside;
    for (const size_t after : {102u, 130u}) EXPECT_NEAR(heard[after], 0.5, 0.02) << after;
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

/// Three scenes, the second with a film as its clock, and a transition of the parameter's type after each of
/// the first two. Frames 5 to 7 are the first transition.
class ThreeScenes : public Export, public ::testing::WithParamInterface<int64_t> {
  protected:
    static constexpr double width = 64, height = 48;  ///< pixels
    static constexpr int64_t middleOfTransition = 6;
    bool isOverlay() const { return GetParam() == 1; }

    ThreeScenes() {
        const std::string photo = testing::writePicture(folder_ / "photo.png", {{200, 100, 50, 128}});
        const auto picture = [&](double part) {
            return Value(testing::texturedQuad("QVQuadObject3D",
                                               {{"textureType", "image"}, {"texture", Value(photo)}}, width,
                                               height * part));
        };
        addScene(1, testing::flatScene(width, height, testing::clock(7), {picture(1)}), 8);
        addScene(2, testing::flatScene(width, height, filmClock(9), {picture(0.5)}), 10);
        addScene(3, testing::flatScene(width, height, testing::clock(7), {picture(0.3)}), 8);
        addScene(9, isOverlay() ? testing::flatScene(width, height, testing::clock(4), {picture(0.2)})
                                : testing::crossFade(width, height, 2));
        play(1, testing::transition(9, 3, GetParam()));
        play(2, testing::transition(9, 3, GetParam()));
        play(3);
    }

    Value filmClock(int64_t lastFrame) const {
        const std::string path = testing::writeFilm(folder_ / "clock.mp4", int(lastFrame) + 1);
        Dictionary source = testing::texturedQuad("QVSingleVideoTimeSource", {}, width, height);
        source["VideoInfo"] = Value(Dictionary{{"msaterVideoPath", Value(path)}, {"videoFps", 30}});
        source["FpsInfo"] = Value(Dictionary{{"startFps", 0}, {"endFps", lastFrame}});
        return Value(std::move(source));
    }

    /// What the group's file tells.
    int announcedFrames() const { return group().totalFrames(); }
    std::string wholeGroup() const {
        return isOverlay() ? "0:c1 x5, 2:c1+t9 x3, 2:c2+t9 x2, 0:c2 x5, 2:c2+t9 x3, 2:c3+t9 x2, 0:c3 x6"
                           : "0:c1 x5, 1:c1+n2+t9 x3, 0:c2 x4, 1:c2+n3+t9 x3, 0:c3 x5";
    }

    /// Starts an export and calls `interrupt` on this thread while the driver is in the first transition.
    void playAndInterrupt(const std::function<void()>& interrupt) {
        std::binary_semaphore isInTransition{0}, isInterrupted{0};
        std::atomic<bool> isDone = false;
        driver_->setFrameSampleBlock([&](int64_t frame) {
            recordFrame();
            censuses_[frame].push_back(testing::glCensus());
            if (frame != middleOfTransition || isDone.exchange(true)) return;
            isInTransition.release();
            isInterrupted.acquire();
        });
        start();
        isInTransition.acquire();
        interrupt();
        isInterrupted.release();
        pumpUntil([&] { return completions_ + failures_ + cancelled_ > 0; });
        if (!cancelled_) pumpUntil([&] { return listener_->ends() > 0; });
        settle();
        driver_->setFrameSampleBlock({});
    }
    std::map<std::string, int> censusNow() {
        std::map<std::string, int> census;
        driver_->performOnRenderQueue([&] { census = testing::glCensus(); });
        return census;
    }
    void expectNothingLeft() {
        EXPECT_TRUE(censusNow().empty()) << ::testing::PrintToString(censusNow());
        EXPECT_EQ(liveObjects(), 0);
    }
    void expectWholeFilm() {
        EXPECT_EQ(completions_, 1);
        EXPECT_EQ(failures_, 0);
        EXPECT_EQ(listener_->finished, 1) << listener_->error;
        EXPECT_EQ(listener_->failed, 0);
        EXPECT_EQ(probe(listener_->path).frameCount, announcedFrames());
        expectNothingLeft();
    }

    std::map<int64_t, std::vector<std::map<std::string, int>>> censuses_;  ///< by frame, one a run
    std::atomic<int> cancelled_{0}, restarted_{0};
};
INSTANTIATE_TEST_SUITE_P(BothModes, ThreeScenes, ::testing::Values(0, 1));

TEST_P(ThreeScenes, PlayToTheEndAsAnnounced) {
    EXPECT_EQ(announcedFrames(), isOverlay() ? 26 : 20);
    createExport(exporter());
    playAndInterrupt([] {});
    EXPECT_EQ(summary(), wholeGroup());
    expectWholeFilm();
    // At the last frame all that is left beside the painter's two framebuffers is the last scene's: its
    // photo, and its own texture that the fade took.
    const auto last = censuses_[announcedFrames() - 1].at(0);
    EXPECT_EQ(last.at("framebuffers"), isOverlay() ? 2 : 3);
    EXPECT_EQ(last.at("textures"), isOverlay() ? 1 : 2);
}

TEST_P(ThreeScenes, RestartInATransitionStartsAFreshFilmWithoutLeftovers) {
    createExport(exporter());
    playAndInterrupt([&] { player_->reStartRender([&] { ++restarted_; }); });
    EXPECT_EQ(restarted_, 1);
    const auto startsAnew = played_.begin() + middleOfTransition + 1;
    EXPECT_EQ(summaryOf({startsAnew, played_.end()}), wholeGroup());
    // At the first frame of the first run nothing has been drawn yet.
    for (int64_t frame = 1; frame <= middleOfTransition; ++frame) {
        ASSERT_EQ(censuses_[frame].size(), 2u);
        for (const char* kind : {"textures", "framebuffers", "renderbuffers"})
            EXPECT_EQ(censuses_[frame][0][kind], censuses_[frame][1][kind]) << kind << " at frame " << frame;
    }
    EXPECT_EQ(censuses_[middleOfTransition][0], censuses_[middleOfTransition][1]) << "programs included";
    expectWholeFilm();
}

TEST_P(ThreeScenes, CancelInATransitionEmptiesAllThreeScenes) {
    createExport(exporter());
    playAndInterrupt([&] { player_->cancelRun([&] { ++cancelled_; }); });
    EXPECT_EQ(played_.size(), size_t(middleOfTransition) + 1) << "the frame under way is the last";
    EXPECT_EQ(frames_, middleOfTransition + 1) << "and it is completed";
    EXPECT_EQ(cancelled_, 1);
    EXPECT_EQ(completions_ + failures_ + listener_->ends(), 0);
    EXPECT_FALSE(driver_->currentScene() || driver_->nextScene() || driver_->transitionsScene());
    EXPECT_FALSE(std::filesystem::exists(film()));
    expectNothingLeft();
}

TEST_P(ThreeScenes, PauseInATransitionHoldsTheFilmAndGoesOn) {
    createExport(exporter());
    std::thread resume;
    playAndInterrupt([&] {
        player_->pauseRun();
        resume = std::thread([&] {
            // The frame under way is completed; then there is time for one that must not come.
            const double deadline = platform::monotonicSeconds() + 60;
            while (frames_ <= middleOfTransition && platform::monotonicSeconds() < deadline)
                platform::sleepSeconds(0.002);
            platform::sleepSeconds(0.05);
            EXPECT_EQ(frames_, middleOfTransition + 1);
            player_->continueRun();
        });
    });
    resume.join();
    EXPECT_EQ(summary(), wholeGroup());
    expectWholeFilm();
}

}  // namespace
}  // namespace multiscene
