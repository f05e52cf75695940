// The scene-group player and the render driver: which scenes play when, and what each frame shows.
#include <array>

#include "output/PictureSink.h"
#include "platform/image/ImageWriter.h"
#include "tests/engine/PlayFixture.h"

namespace multiscene {
namespace {

using testing::clock;
using testing::Dictionary;
using testing::flatScene;
using testing::isNear;
using testing::patch;
using testing::Pixel;
using testing::texturedQuad;
using testing::transition;
using testing::Value;

class GroupPlay : public testing::PlayFixture {
  protected:
    GroupPlay() { renderer_ = Renderer::GL; }

    static constexpr int side = 32;  ///< pixels of the picture

    struct Ends {
        Pixel top, bottom;  // of the picture's first column
    };
    std::shared_ptr<PictureSink> pixelSink(PictureSink::Selection selection = {}) {
        const auto receive = [this](const PictureSink::Picture& picture) {
            Ends& ends = shown_[picture.frame];
            std::copy_n(picture.rgba, 4, ends.top.begin());
            std::copy_n(picture.rgba + (side - 1) * side * 4, 4, ends.bottom.begin());
        };
        return std::make_shared<PictureSink>(side, side, receive, std::move(selection));
    }
    void expectShown(int64_t frame, const Pixel& top, const Pixel& bottom) {
        EXPECT_TRUE(isNear(shown_[frame].top, top)) << "frame " << frame << ", top";
        EXPECT_TRUE(isNear(shown_[frame].bottom, bottom)) << "frame " << frame << ", bottom";
    }

    std::map<int64_t, Ends> shown_;
};

TEST_F(GroupPlay, ReadsEachSceneFileOnceHoweverOftenItIsPlayed) {
    addScene(1, 2);
    addScene(9, 2);
    catalogue_->scenes[2] = catalogue_->scenes[1];  // the same file under another number
    catalogue_->scenes[2].sId = 2;
    play(1, transition(9, 1, 1));
    play(2);
    play(1);
    create(pixelSink());
    recordFrames();
    const SceneGroup read = group();
    EXPECT_EQ(read.scenes.size(), 3u);
    std::filesystem::remove_all(folder_);
    player_->loadSceneGroup(read);
    pumpUntil([&] { return completions_ + failures_ > 0; });
    EXPECT_EQ(summary(), "0:c1 x2, 2:c1+t9 x1, 2:c2+t9 x2, 0:c2 x1, 0:c1 x3");
    EXPECT_EQ(completions_, 1);
}

TEST_F(GroupPlay, TextureTransitionFadesBothMovingScenesIntoEachOther) {
    addScene(1, 6, {patch("1,0,0,1"), patch("0,1,0,1", "0,16,32,16")});
    addScene(2, 6,
             {patch("0,0,1,1"), patch("1,1,1,1", "0,0,32,16",
                                      {{"FpsInfo", Value(Dictionary{{"startFps", 4}, {"endFps", 9}})}})});
    addScene(9, testing::crossFade(side, side, 4));
    play(1, transition(9, 5, 0));
    play(2);
    create(pixelSink());
    recordFrames();
    run();
    // Scene 2 advances with the transition, so two of its frames are left.
    EXPECT_EQ(summary(), "0:c1 x2, 1:c1+n2+t9 x5, 0:c2 x2");
    EXPECT_EQ(completions_, 1);
    const Pixel red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255}, white{255, 255, 255, 255};
    expectShown(1, green, red);
    expectShown(2, green, red);
    expectShown(4, {0, 128, 128, 255}, {128, 0, 128, 255});
    expectShown(6, blue, white);
    expectShown(7, blue, white);
}

TEST_F(GroupPlay, ASceneThatRunsOutDuringTheTransitionIntoItEndsWhenItIsCurrent) {
    addScene(1, 6);
    addScene(2, 2);
    addScene(3, 1);
    // Ends at its last frame, in which the video has no further picture.
    addScene(4, Value(Dictionary{
                    {"TimeSource",
                     Value(Dictionary{
                         {"type", "QVSingleVideoTimeSource"},
                         {"VideoInfo", Value(Dictionary{{"msaterVideoPath", "$(currentScenePlistROOT)/f.mp4"},
                                                        {"videoFps", 30}})},
                         {"FpsInfo", Value(Dictionary{{"startFps", 0}, {"endFps", 50}})}})}}));
    testing::writeFilm(folder_ / "f.mp4", 2);
    addScene(9, testing::crossFade(side, side, 4));
    play(1, transition(9, 5, 0));
    play(2);
    play(1, transition(9, 5, 0));
    play(4);
    play(3);
    create(pixelSink());
    recordFrames();
    run();
    EXPECT_EQ(failures_, 0) << (error_ ? error_->what() : "");
    EXPECT_EQ(completions_, 1);
    // A frame of its own closes it, and what follows was not built ahead.
    EXPECT_EQ(summary(), "0:c1 x2, 1:c1+n2+t9 x5, 0:c2 x1, 0:c1 x2, 1:c1+n4+t9 x5, 0:c4 x1, 0:c3 x2");
}

TEST_F(GroupPlay, OverlayIsDrawnOverTheSceneAndOutlivesIt) {
    const auto picture = testing::writePicture(folder_ / "veil.png", {{0, 255, 0, 128}});
    const Value veil = testing::texturedQuad(
        "QVQuadObject3D", {{"textureType", "image"}, {"texture", Value(picture)}}, side, side / 2, -8);
    addScene(1, 5, {patch("1,0,0,1")});
    addScene(2, 6, {patch("0,0,1,1")});
    addScene(9, testing::flatScene(side, side, clock(4), {veil}));
    play(1, transition(9, 2, 1));
    play(2);
    create(pixelSink());
    recordFrames();
    run();
    EXPECT_EQ(summary(), "0:c1 x4, 2:c1+t9 x2, 2:c2+t9 x3, 0:c2 x4");
    const Pixel red{255, 0, 0, 255}, veiledRed{127, 128, 0, 255}, blue{0, 0, 255, 255},
        veiledBlue{0, 128, 127, 255};
    expectShown(3, red, red);
    expectShown(4, red, veiledRed);
    expectShown(6, blue, veiledBlue);
    expectShown(8, blue, veiledBlue);
    expectShown(9, blue, blue);
}

TEST_F(GroupPlay, TransitionTakesThePlaceOfARunningOverlay) {
    addScene(1, 5);
    addScene(2, 5);
    addScene(3, 3);
    addScene(8, testing::crossFade(side, side, 1));
    addScene(9, 100, {patch("0,1,0,1")});
    play(1, transition(9, 2, 1));
    play(2, transition(8, 2, 0));
    play(3);
    create(pixelSink());
    recordFrames();
    run();
    EXPECT_EQ(summary(), "0:c1 x4, 2:c1+t9 x2, 2:c2+t9 x4, 1:c2+n3+t8 x2, 0:c3 x2");
    EXPECT_EQ(completions_, 1);
    EXPECT_EQ(liveObjects(), 0);
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

TEST_F(GroupPlay, FramesThatAreLeftOutStillFillWhatLaterOnesShow) {
    const Value ends = Value(Dictionary{{"startFps", 0},
                                        {"endFps", 4},
                                        {"RenderDepth", 1},
                                        {"isRenderToTexture", true},
                                        {"textureSize", "32,32"},
                                        {"textureMapKey", "kept"}});
    const Value target =
        Value(Dictionary{{"type", "QVObject3DTransformBase"},
                         {"FpsInfo", ends},
                         {"childNode", Value(Value::Array{patch("0.4,0.8,1,1", {}, {{"flickers", true}})})}});
    const Value bracket =
        Value(Dictionary{{"type", "QVObject3DTransformBase"}, {"childNode", Value(Value::Array{target})}});
    // One that draws something behind itself, which is left out too.
    const std::string file = folder_ / "dot.png";
    platform::writePng(file, {1, 1, std::array<uint8_t, 4>{9, 9, 9, 255}.data(), 4});
    Dictionary fitted =
        texturedQuad("QVQuadObject3D", {{"textureType", "image"}, {"texture", file}}, 2, 1, 15);
    fitted["QuadInfo"] =
        fitted["QuadInfo"].with("quadObject3DContentMode", 1).with("backgroundRenderMode", 1);
    addScene(
        1,
        flatScene(32, 32, clock(9),
                  {bracket,
                   Value(texturedQuad("QVQuadObject3D",
                                      {{"textureType", "RTTTexture"}, {"textureMapKey", "kept"}}, 32, 32)),
                   Value(fitted)}),
        10);
    play(1);
    std::map<int64_t, std::vector<uint8_t>> pictures;
    const auto playOf = [&](const PictureSink::Selection& selection) {
        pictures.clear();
        completions_ = 0;
        create(std::make_shared<PictureSink>(
            32, 32,
            [&](const PictureSink::Picture& picture) {
                pictures[picture.frame].assign(picture.rgba, picture.rgba + size_t{32 * 32 * 4});
            },
            selection));
        run();
        return pictures;
    };
    for (const Renderer renderer : {Renderer::GL, Renderer::Software}) {
        renderer_ = renderer;
        const auto all = playOf({});
        EXPECT_EQ(playOf([](int64_t frame) { return frame == 8; }).at(8), all.at(8));
        EXPECT_EQ(driver_->statistics().drawnFrames, 1);
        EXPECT_EQ(all.at(8), all.at(4)) << "the node is gone, its last picture is not";
        EXPECT_NE(all.at(8), all.at(3));
    }
}

TEST_F(GroupPlay, FramesLeftOutOfATransitionFillTheScenesTextures) {
    const auto in = [](int64_t first, int64_t last) {
        return Value(Dictionary{{"startFps", first}, {"endFps", last}});
    };
    // From its sixth frame on, the first after the transition, the second scene shows the last picture of
    // itself that the transition drew.
    Dictionary kept =
        texturedQuad("QVQuadObject3D", {{"textureType", "currentSceneRenderTexture"}}, side, side);
    kept["FpsInfo"] = in(5, 9);
    addScene(1, 6);
    addScene(2, flatScene(side, side, clock(8),
                          {patch("0,0,1,1", {}, {{"FpsInfo", in(0, 3)}}),
                           patch("1,0,0,1", {}, {{"FpsInfo", in(4, 4)}}), Value(kept)}));
    addScene(9, testing::crossFade(side, side, 4));
    play(1, transition(9, 5, 0));
    play(2);
    create(pixelSink([](int64_t frame) { return frame == 8; }));
    run();
    ASSERT_EQ(shown_.size(), 1u);
    expectShown(8, {255, 0, 0, 255}, {255, 0, 0, 255});
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
    EXPECT_EQ(nodes[2].string("type"), "QVFrustumCamera");
    EXPECT_EQ(nodes[3].string("type"), "QVNullVideoTimeSource");
}

}  // namespace
}  // namespace multiscene
