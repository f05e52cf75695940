// How a run is paused, cancelled and started again, and how it ends.
#include <array>
#include <set>

#include "output/PictureSink.h"
#include "platform/base/NotificationCenter.h"
#include "tests/engine/PlayFixture.h"

namespace multiscene {
namespace {

using testing::Dictionary;
using testing::patch;
using testing::Value;

class RunControl : public testing::PlayFixture {
  protected:
    RunControl() { renderer_ = Renderer::GL; }
};

TEST_F(RunControl, CancelReachesEarlierRunsOnly) {
    addScene(1, 1000000);
    play(1);
    create(nullptr);
    start();
    std::atomic<int> cancelled = 0;
    player_->cancelRun([&] { ++cancelled; });
    scenes_.clear();
    addScene(2, 2);
    play(2);
    start();  // waits for the cancelled run, then plays on its own
    pumpUntil([&] { return completions_ > 0; });
    EXPECT_EQ(cancelled, 1);
    EXPECT_EQ(completions_, 1);
}

TEST_F(RunControl, PauseStopsFramesAndResumingTellsTheDecodersFirst) {
    addScene(1, 1000000);
    play(1);
    create(nullptr);
    constexpr int64_t paused = 4;
    driver_->setFrameRenderingCompleteBlock([this](int64_t count) {
        // Between two turns, so that no turn is under way.
        if (count == paused) player_->pauseRun();
        frames_ = count;
    });
    start();
    pumpUntil([&] { return frames_ >= paused; });
    settle();
    EXPECT_EQ(frames_, paused);
    std::atomic<bool> wasPausedWhenTold = false;
    const auto token = platform::NotificationCenter::shared().addObserver(
        "kRefushMultiSceneRenderStartTime", [&] { wasPausedWhenTold = driver_->isPauseRun(); });
    player_->continueRun();
    EXPECT_TRUE(wasPausedWhenTold);
    pumpUntil([&] { return frames_ > paused; });
}

TEST_F(RunControl, CancelEndsAPausedRun) {
    addScene(1, 1000000);
    play(1);
    create(nullptr);
    player_->pauseRun();
    start();
    std::atomic<int> cancelled = 0;
    player_->cancelRun([&] { ++cancelled; });
    pumpUntil([&] { return cancelled == 1; });
    EXPECT_EQ(frames_, 0);
}

TEST_F(RunControl, WhoEndsARunFirstEndsIt) {
    addScene(1, 3, {patch("1,0,0,1")});
    play(1);
    std::atomic<int> calls = 0;
    struct Case {
        const char* name;
        std::function<void()> end;
        int completions;
    };
    const std::array cases{
        Case{"restart", [&] { player_->reStartRender([&] { ++calls; }); }, 1},
        Case{"cancel", [&] { player_->cancelRun([&] { ++calls; }); }, 0},
        Case{"restart, then cancel",
             [&] {
                 player_->reStartRender();
                 player_->cancelRun([&] { ++calls; });
             },
             0},
    };
    for (const Case& ending : cases) {
        SCOPED_TRACE(ending.name);
        calls = completions_ = 0;
        std::set<int64_t> shown;
        create(
            std::make_shared<PictureSink>(32, 32, [&](const auto& picture) { shown.insert(picture.frame); }));
        // Called in the turn that plays the group's last frame.
        driver_->setFrameSampleBlock([&](int64_t frame) {
            if (frame == 3 && calls == 0) ending.end();
        });
        start();
        pumpUntil([&] { return calls == 1 && completions_ == ending.completions; });
        settle();
        driver_->performOnRenderQueue([] {});
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(completions_, ending.completions);
        EXPECT_EQ(failures_, 0) << error_->what();
        EXPECT_EQ(shown.size(), 4u) << "frames are counted anew";
        EXPECT_EQ(liveObjects(), 0);
    }
}

TEST_F(RunControl, RestartOfAGroupThatCannotBeBuiltFailsOnceAndLeavesNothingBehind) {
    addScene(1, 1000000, {patch("1,0,0,1")});
    addScene(2, 3, {Value(Dictionary{{"type", "QVNothing"}})});
    play(1);
    create(std::make_shared<PictureSink>(32, 32, [](const auto&) {}));
    start();
    pumpUntil([&] { return frames_ > 3; });
    player_->reStartRenderwithSceneGroup(group({Value(Dictionary{{"mainSceneId", 2}})}));
    pumpUntil([&] { return failures_ > 0; });
    settle();
    driver_->performOnRenderQueue([] {});
    EXPECT_EQ(failures_, 1);
    EXPECT_EQ(completions_, 0);
    EXPECT_EQ(liveObjects(), 0);
}

TEST_F(RunControl, RunsThatCannotEndFailOnceWithTheReason) {
    struct Case {
        const char* name;
        std::function<void()> prepare;
        platform::ErrorKind kind;
        const char* word;
    };
    const std::array cases{
        Case{"no clock", [&] { addScene(2, Value(Dictionary{})); }, platform::ErrorKind::Failed, "clock"},
        Case{"no such scene", [&] { catalogue_->scenes.erase(2); }, platform::ErrorKind::Failed, "clock"},
        Case{"unknown node",
             [&] {
                 addScene(2, 3, {Value(Dictionary{{"type", "QVNothing"}})});
             },
             platform::ErrorKind::Template, "QVNothing"},
        Case{"outside the fence",
             [&] {
                 addScene(2, 1000000);
                 driver_->setFrameRenderingCompleteBlock(
                     [this](int64_t) { playback_->gate().exists("/etc/hostname"); });
             },
             platform::ErrorKind::Template, "/etc/hostname"},
    };
    for (const Case& bad : cases) {
        SCOPED_TRACE(bad.name);
        playback_ = std::make_shared<Playback>();
        playback_->gate().allowFolder(folder_);
        scenes_.clear();
        failures_ = 0;
        error_.reset();
        addScene(1, 2);
        play(1);
        play(2);
        create(std::make_shared<PictureSink>(32, 32, [](const auto&) {}));
        bad.prepare();
        run();
        EXPECT_EQ(failures_, 1);
        EXPECT_EQ(completions_, 0);
        ASSERT_TRUE(error_);
        EXPECT_EQ(error_->kind(), bad.kind);
        EXPECT_NE(std::string(error_->what()).find(bad.word), std::string::npos) << error_->what();
        EXPECT_EQ(liveObjects(), 0);
    }
}

TEST_F(RunControl, FirstSceneWithAnUnknownTypeIsToldToTheCaller) {
    addScene(1, 3, {Value(Dictionary{{"type", "QVNothing"}})});
    play(1);
    create(nullptr);
    EXPECT_THROW(start(), platform::Error);
}

}  // namespace
}  // namespace multiscene
