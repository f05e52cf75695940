// The scene-group player and the render driver: which scenes play when, and how a run ends.
#include <array>

#include "platform/base/NotificationCenter.h"
#include "platform/image/ImageWriter.h"
#include "tests/engine/PlayFixture.h"
#include "videoRenderCore/PictureSink.h"
#include "videoRenderCore/SceneTrace.h"

namespace multiscene {
namespace {

using testing::clock;
using testing::Dictionary;
using testing::patch;
using testing::transition;
using testing::Value;

class GroupPlay : public testing::PlayFixture {
  protected:
    /// "mode:slot+slot" of each frame, such as "1:c1+n2+t9".
    void recordFrames() {
        driver_->setFrameSampleBlock([this](int64_t) {
            const Value line = SceneTrace::frame(*driver_);
            std::string text = line.string("mode") + ":";
            for (const Value& scene : line.array("scenes"))
                text += (text.back() == ':' ? "" : "+") + scene.string("slot").substr(0, 1) +
                        scene.string("sceneId");
            played_.push_back(text);
        });
    }
    /// Runs of equal frames: "0:c1 x4, 1:c1+n2+t9 x2".
    std::string summary() const {
        std::string text;
        for (size_t i = 0; i < played_.size();) {
            size_t end = i;
            while (end < played_.size() && played_[end] == played_[i]) ++end;
            text += (text.empty() ? "" : ", ") + played_[i] + " x" + std::to_string(end - i);
            i = end;
        }
        return text;
    }

    std::vector<std::string> played_;
};

TEST_F(GroupPlay, OneSceneEndsOnceAndLeavesNothingBehind) {
    addScene(1, 4, {patch("1,0,0,1")});
    play(1);
    create(std::make_shared<PictureSink>(32, 32, [](const auto&) {}));
    EXPECT_GT(liveObjects(), 0);
    run();
    EXPECT_EQ(completions_, 1);
    EXPECT_EQ(failures_, 0);
    EXPECT_EQ(frames_, 5);  // the end frame is included
    EXPECT_EQ(driver_->currentRenderFps(), 0);
    EXPECT_EQ(liveObjects(), 0);
}

TEST_F(GroupPlay, TextureTransitionShowsBothScenesThenTheNext) {
    addScene(1, 5);
    addScene(2, 6);
    addScene(9, 3);
    play(1, transition(9, 2, 0));
    play(2);
    create(nullptr);
    recordFrames();
    run();
    // Scene 2 advances with the transition, so four of its frames are left.
    EXPECT_EQ(summary(), "0:c1 x4, 1:c1+n2+t9 x2, 0:c2 x5");
    EXPECT_EQ(completions_, 1);
}

TEST_F(GroupPlay, OverlayOutlivesTheSceneThatItStartedIn) {
    addScene(1, 5);
    addScene(2, 6);
    addScene(9, 4);
    play(1, transition(9, 2, 1));
    play(2);
    create(nullptr);
    recordFrames();
    run();
    EXPECT_EQ(summary(), "0:c1 x4, 2:c1+t9 x2, 2:c2+t9 x3, 0:c2 x4");
}

TEST_F(GroupPlay, TransitionOfAnotherTypeAndMissingTransitionAreHardCuts) {
    addScene(1, 2);
    addScene(2, 2);
    play(1, transition(2, 1, 5));
    play(2);
    create(nullptr);
    recordFrames();
    run();
    EXPECT_EQ(summary(), "0:c1 x3, 0:c2 x3");
}

TEST_F(GroupPlay, SceneThatIsNeverDueIsFollowedAllTheSame) {
    // The clock's own range starts late, so nothing asks for the next scene in time.
    addScene(
        1, Value(Dictionary{{"TimeSource",
                             clock(3).with("FpsInfo", Value(Dictionary{{"startFps", 50}, {"endFps", 3}}))}}));
    addScene(2, 1);
    play(1);
    play(2);
    create(nullptr);
    recordFrames();
    run();
    EXPECT_EQ(summary(), "0:c1 x4, 0:c2 x2");
    EXPECT_EQ(completions_, 1);
}

TEST_F(GroupPlay, LoopGoesRoundUntilItIsCancelled) {
    addScene(1, 1);
    addScene(2, 0);
    play(1);
    play(2);
    create(std::make_shared<PictureSink>(32, 32, [](const auto&) {}), {}, true);
    recordFrames();
    std::atomic<bool> isLong = false;
    driver_->setFrameRenderingCompleteBlock([&](int64_t) { isLong = played_.size() >= 8; });
    start();
    pumpUntil([&] { return isLong.load(); });
    std::atomic<int> cancelled = 0;
    player_->cancelRun([&] { ++cancelled; });
    pumpUntil([&] { return cancelled == 1; });
    driver_->performOnRenderQueue([] {});
    EXPECT_EQ(cancelled, 1);
    EXPECT_EQ(completions_ + failures_, 0);
    EXPECT_TRUE(summary().starts_with("0:c1 x2, 0:c2 x1, 0:c1 x2, 0:c2 x1, 0:c1 x2")) << summary();
    EXPECT_EQ(liveObjects(), 0);
}

TEST_F(GroupPlay, CancelReachesEarlierRunsOnly) {
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

TEST_F(GroupPlay, PauseStopsFramesAndResumingTellsTheDecodersFirst) {
    addScene(1, 1000000);
    play(1);
    create(nullptr);
    start();
    pumpUntil([&] { return frames_ > 3; });
    player_->pauseRun();
    platform::sleepSeconds(0.05);
    const int64_t paused = frames_;
    platform::sleepSeconds(0.05);
    EXPECT_EQ(frames_, paused);
    std::atomic<bool> wasPausedWhenTold = false;
    const auto token = platform::NotificationCenter::shared().addObserver(
        "kRefushMultiSceneRenderStartTime", [&] { wasPausedWhenTold = driver_->isPauseRun(); });
    player_->continueRun();
    EXPECT_TRUE(wasPausedWhenTold);
    pumpUntil([&] { return frames_ > paused; });
}

TEST_F(GroupPlay, CancelEndsAPausedRun) {
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

TEST_F(GroupPlay, RestartPlaysAgainFromTheFirstScene) {
    addScene(1, 1);
    addScene(2, 1000000);
    play(1);
    play(2);
    create(nullptr);
    recordFrames();
    start();
    pumpUntil([&] { return frames_ > 5; });
    std::atomic<int> restarts = 0;
    size_t before = 0;
    player_->reStartRender([&] {
        ++restarts;
        before = played_.size();
        frames_ = 0;
        EXPECT_EQ(driver_->currentRenderFps(), 0);
    });
    pumpUntil([&] { return restarts == 1; });
    pumpUntil([&] { return frames_ > 3; });
    std::atomic<bool> isCancelled = false;
    driver_->cancelRun([&] { isCancelled = true; });
    pumpUntil([&] { return isCancelled.load(); });
    ASSERT_GT(played_.size(), before + 2);
    EXPECT_EQ(played_[before], "0:c1");
    EXPECT_EQ(played_[before + 2], "0:c2");
    EXPECT_EQ(restarts, 1);
}

TEST_F(GroupPlay, RunsThatCannotEndFailOnceWithTheReason) {
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
                     [](int64_t) { platform::FileGate::shared().exists("/etc/hostname"); });
             },
             platform::ErrorKind::Template, "/etc/hostname"},
    };
    for (const Case& bad : cases) {
        SCOPED_TRACE(bad.name);
        platform::FileGate::shared().reset();
        platform::FileGate::shared().allowFolder(folder_);
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

TEST_F(GroupPlay, FirstSceneWithAnUnknownTypeIsToldToTheCaller) {
    addScene(1, 3, {Value(Dictionary{{"type", "QVNothing"}})});
    play(1);
    create(nullptr);
    EXPECT_THROW(start(), platform::Error);
}

TEST_F(GroupPlay, PicturesOfSelectedFramesOnlyTopRowFirst) {
    addScene(1, 9,
             {patch("1,0,0,1", {}, {{"FpsInfo", Value(Dictionary{{"startFps", 0}, {"endFps", 4}})}}),
              patch("0,0,1,0.5", "0,16,32,16")});
    play(1);
    std::map<int64_t, std::array<int, 8>> pictures;
    const auto sink = std::make_shared<PictureSink>(
        32, 32,
        [&](const PictureSink::Picture& picture) {
            const uint8_t* bottom = picture.rgba + 31 * 32 * 4;
            for (size_t i = 0; i < 4; ++i) {
                pictures[picture.frame][i] = picture.rgba[i];
                pictures[picture.frame][i + 4] = bottom[i];
            }
        },
        [](int64_t frame) { return frame % 4 == 0; });
    create(sink);
    run();
    ASSERT_EQ(pictures.size(), 3u);
    EXPECT_EQ(driver_->statistics().drawnFrames, 3);
    EXPECT_EQ(driver_->statistics().frames, 10);
    const std::array<int, 8> early{0, 0, 255, 128, 255, 0, 0, 255}, late{0, 0, 255, 128, 0, 0, 0, 0};
    EXPECT_EQ(pictures[0], early);
    EXPECT_EQ(pictures[4], early);
    EXPECT_EQ(pictures[8], late);
}

TEST_F(GroupPlay, QuadsThatCutEachOtherAreHiddenByDepth) {
    const auto turned = [&](const std::array<uint8_t, 4>& color, const char* rotation, bool depth) {
        const std::string file = folder_ / (std::string("turned") + rotation + ".png");
        platform::writePng(file, {1, 1, color.data(), 4});
        return Value(
            Dictionary{{"type", "QVQuadObject3D"},
                       {"TextureInfo", Value(Dictionary{{"textureType", "image"}, {"texture", file}})},
                       {"QuadInfo", Value(Dictionary{{"modelWidth", 32}, {"modelHeight", 32}})},
                       {"FpsInfo", Value(Dictionary{{"isEnableDephTest", depth}})},
                       // At rest, in radians.
                       {"TransformArray", Value(Value::Array{Value(Dictionary{
                                              {"sartFps", 0}, {"endFps", 1}, {"startRotate", rotation}})})}});
    };
    const Value camera(Dictionary{{"type", "QVOrthCamera"}, {"OrthWidth", 32}, {"aspect", 1}});
    for (const bool depth : {true, false}) {
        // The left half of the first and the right half of the second come forward.
        addScene(1, Value(Dictionary{
                        {"Camera", camera},
                        {"TimeSource", clock(0)},
                        {"object3D", Value(Value::Array{turned({255, 0, 0, 255}, "0,0.6,0", depth),
                                                        turned({0, 0, 255, 255}, "0,-0.6,0", depth)})}}));
        scenes_.clear();
        play(1);
        std::array<int, 2> red{};
        create(std::make_shared<PictureSink>(32, 32, [&](const PictureSink::Picture& picture) {
            for (size_t side = 0; side < 2; ++side) red[side] = picture.rgba[(16 * 32 + (side ? 22 : 9)) * 4];
        }));
        completions_ = 0;
        run();
        EXPECT_EQ(red, (depth ? std::array{255, 0} : std::array{0, 0})) << depth;
    }
}

TEST_F(GroupPlay, TraceListsEveryChildInTreeOrder) {
    const Value child = Value(Dictionary{{"type", "TestPatch"}, {"name", "inner"}});
    addScene(1, Value(Dictionary{
                    {"TimeSource", clock(0)},
                    {"LightSourceArray", Value(Value::Array{Value(Dictionary{
                                             {"lightSourceType", 2}, {"lightSourcePosition", "1,2,3"}})})},
                    {"object3D",
                     Value(Value::Array{Value(Dictionary{
                         {"type", "QVObject3DTransformBase"},
                         {"name", "outer"},
                         {"FpsInfo", Value(Dictionary{{"startFps", 1}, {"endFps", 2}, {"RenderDepth", 5}})},
                         {"childNode", Value(Value::Array{child})}})})}}));
    play(1);
    create(nullptr);
    Value line;
    driver_->setFrameSampleBlock([&](int64_t) { line = SceneTrace::frame(*driver_); });
    run();
    const Value& scene = line.array("scenes")[0];
    EXPECT_EQ(scene["camera"].array("projection").size(), 16u);
    EXPECT_EQ(scene.array("lights")[0].integer("type"), 2);
    EXPECT_EQ(scene.array("lights")[0].array("position")[2].integerValue(), 3);
    const auto& nodes = scene.array("nodes");
    ASSERT_EQ(nodes.size(), 4u);  // deepest first; the camera and the clock are children too
    EXPECT_EQ(nodes[0].string("name"), "outer");
    EXPECT_FALSE(nodes[0].boolean("due"));
    EXPECT_TRUE(nodes[0]["parent"].isNone());
    EXPECT_EQ(nodes[1].string("name"), "inner");
    EXPECT_EQ(nodes[1].array("path").size(), 2u);
    EXPECT_EQ(nodes[1]["parent"], nodes[0]["path"]);
    EXPECT_EQ(nodes[2].string("type"), "QVCamera3D");
    EXPECT_EQ(nodes[3].string("type"), "QVNullVideoBgObject3D");
}

}  // namespace
}  // namespace multiscene
