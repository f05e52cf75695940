#include <gmock/gmock.h>

#include <cstdlib>

#include "DrawableFixture.h"
#include "TimeSource/QVSingleVideoBgObject3D.h"
#include "platform/base/Clock.h"
#include "playback/VideoTimeSource.h"
#include "videoDecode/QVNullVideoDecode.h"
#include "videoDecode/QVVideoReader.h"

namespace multiscene::testing {

TEST(FrameTime, IsTruncatedAtTheReadersRate) {
    const auto frameOf = [](int64_t value, int32_t timescale, int32_t fps) {
        return QVVideoReader::frameTimeOf(platform::CMTimeMake(value, timescale), fps).value;
    };
    EXPECT_EQ(frameOf(40, 1000, 25), 1);
    EXPECT_EQ(frameOf(33, 1000, 25), 0);
    EXPECT_EQ(frameOf(3000, 90000, 30), 1);
    EXPECT_EQ(frameOf(33, 1000, 30), 0);
    EXPECT_EQ(frameOf(33, 1000, 0), 0);
}

/// Writes down what a time source tells its player.
class Listener : public VideoTimeSourceDelegate {
  public:
    void didStartRender(VideoTimeSource&, const std::shared_ptr<QVScene3D>&) override { note("start"); }
    void didCompleteRender(VideoTimeSource& source, const std::shared_ptr<QVScene3D>&) override {
        note("complete");
        if (dropsSource) source.cancelDecode();
    }
    void didLoadNextScene(VideoTimeSource&, const std::shared_ptr<QVScene3D>&) override { note("load next"); }
    void didSceneTransitions(VideoTimeSource&, int32_t type, int64_t sceneId) override {
        note("transition " + std::to_string(type) + " to " + std::to_string(sceneId));
    }
    void note(const std::string& what) { events.push_back(std::to_string(turn) + " " + what); }

    int turn = 0;
    bool dropsSource = false;
    std::vector<std::string> events;
};

/// A film of three pictures, half red and half transparent, in which all pixels are seen through a little.
std::string writeGhost(const std::filesystem::path& path, const std::string& codec) {
    const std::string half = "s=32x64:r=30:d=0.1,format=rgba";
    const std::string command = "ffmpeg -v error -y -filter_complex 'color=red@0.5:" + half +
                                "[left];color=white@0:" + half + "[right];[left][right]hstack' " + codec +
                                " " + path.string();
    EXPECT_EQ(std::system(command.c_str()), 0);
    return path;
}

class VideoSourceTest : public DrawableFixture {
  protected:
    /// The scene's clock, as the player makes it.
    std::shared_ptr<VideoTimeSource> clock(const std::string& type, Dictionary info,
                                           const Value& transition = {}, bool atActualSpeed = false) {
        info["QuadInfo"] = dictionary({{"modelWidth", side}, {"modelHeight", side}});
        source = TimeSourceTypes::find(type)->make(Value(info), {.renderManager = &driver,
                                                                 .scene = scene,
                                                                 .isPlayAtActualSpeed = atActualSpeed,
                                                                 .sceneTansitionsInfo = transition});
        source->node()->setScene(scene);
        source->node()->rendInfoWithDic(Value(info));
        source->setDelegate(listener);
        source->computeTimeSourceFpsTotal();
        scene->setTimeSource(source);
        scene->addChild(source->node());
        return source;
    }
    static Value lasting(int64_t lastFrame) { return frames(0, lastFrame); }
    Dictionary video(const std::string& file, int64_t lastFrame, int fps = 30) {
        return {{"VideoInfo", dictionary({{"msaterVideoPath", Value(file)}, {"videoFps", fps}})},
                {"FpsInfo", lasting(lastFrame)}};
    }
    Dictionary noVideo(int64_t lastFrame) {
        return {{"NullVideoInfo", dictionary({{"videoFps", 30}, {"fpsTotal", 7}})},
                {"FpsInfo", lasting(lastFrame)}};
    }

    /// Turns of the driver until the source has ended; the frame time of each turn.
    std::vector<int64_t> play(bool draws = false) {
        std::vector<int64_t> times;
        for (; source->isAlive() && times.size() < mostTurns; ++listener->turn) {
            source->decodeNextFpsWithGroupQueue();
            times.push_back(scene->currentRenderTime().value);
            scene->updateData();
            scene->updateMatrix();
            if (draws) {
                drawAgain(kBlue);
                levels.push_back(at(32, 32)[0]);
                blues.push_back(at(32, 32)[2]);
            }
            scene->renderComplete();
            source->fpsRenderCompletedHandle();
        }
        return times;
    }

    size_t mostTurns = 40;
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();
    std::shared_ptr<VideoTimeSource> source;
    std::vector<int> levels, blues;  // of the middle, drawn over blue
};

TEST_F(VideoSourceTest, AFrameClockDeliversItsLastFrameToo) {
    clock("QVNullVideoTimeSource", noVideo(3),
          dictionary({{"sceneTansitionsType", 1}, {"tansitionsSceneId", 42}, {"fpsTotal", 2}}));
    EXPECT_THAT(play(), ::testing::ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(listener->events,
                ::testing::ElementsAre("0 start", "0 load next", "1 transition 2 to 42", "3 complete"));
}

TEST_F(VideoSourceTest, AFrameClockWithoutAnEndKeepsItsOwnTotal) {
    Dictionary info = noVideo(0);
    info.erase("FpsInfo");
    clock("QVNullVideoTimeSource", info);
    EXPECT_EQ(play().size(), 8u);
    newScene();
    clock("QVNullVideoTimeSource", noVideo(0));
    EXPECT_EQ(play().size(), 1u);
}

TEST_F(VideoSourceTest, AVideoThatRunsDryHoldsItsLastPictureForOneTurn) {
    clock("QVSingleVideoTimeSource", video(film("film.mp4", 4), 100),
          dictionary({{"sceneTansitionsType", 0}, {"tansitionsSceneId", 9}, {"fpsTotal", 97}}));
    EXPECT_THAT(play(true), ::testing::ElementsAre(0, 1, 2, 3, 3));
    EXPECT_NEAR(levels[4], levelOf(3), 4);
    EXPECT_THAT(listener->events,
                ::testing::ElementsAre("0 start", "0 load next", "3 transition 1 to 9", "4 complete"));
}

TEST_F(VideoSourceTest, UnreadableAndOtherwiseTimedVideosAreReported) {
    clock("QVSingleVideoTimeSource", video(path("none.mp4"), 10));
    EXPECT_EQ(play(true).size(), 1u);
    EXPECT_EQ(reported().size(), 1u);
    newScene();
    clock("QVSingleVideoTimeSource", video(film("film.mp4", 4, 25), 2));
    play();
    ASSERT_EQ(reported().size(), 2u);
    EXPECT_THAT(reported()[1].what, ::testing::HasSubstr("25.00 frames a second"));
    EXPECT_FALSE(reported()[1].isLeftOut);
}

TEST_F(VideoSourceTest, AMaskVideoGivesTheOpacityAndTheShorterOneEndsBoth) {
    Dictionary info = video(film("master.mp4", 6), 100);
    info["VideoInfo"] = info["VideoInfo"].with("maskVideoPath", Value(film("mask.mp4", 4)));
    clock("QVMaskVideoTimeSource", info);
    EXPECT_THAT(play(true), ::testing::ElementsAre(0, 1, 2, 3, 3));
    for (int i = 0; i < 5; ++i) {
        const int shown = std::min(i, 3);
        const int opaque = levelOf(shown) * levelOf(shown) / 255;
        EXPECT_NEAR(levels[size_t(i)], opaque, 4) << i;
        EXPECT_NEAR(blues[size_t(i)], opaque + 255 - levelOf(shown), 4) << "what lies behind shows through";
    }
}

TEST_F(VideoSourceTest, AFilmWithAlphaIsBlendedAsAClockAndAsATexture) {
    struct Format {
        const char *name, *codec;
    };
    for (const Format& it :
         {Format{"a.mov", "-c:v png"}, Format{"b.mov", "-c:v qtrle"},
          Format{"c.webm", "-c:v libvpx-vp9 -pix_fmt yuva420p -lossless 1 -auto-alt-ref 0"},
          Format{"d.webm", "-c:v libvpx -pix_fmt yuva420p -crf 4 -b:v 8M -auto-alt-ref 0"}}) {
        const std::string ghost = writeGhost(path(it.name), it.codec);
        const auto expectSeenThrough = [&] {
            EXPECT_TRUE(isNear(at(8, 32), {128, 0, 128, 255}, 6)) << it.name;
            EXPECT_TRUE(isNear(at(56, 32), kBlue, 6)) << it.name;
            // The colour behind transparent pixels, whatever it is, does not show at the rim.
            EXPECT_LT(at(31, 32)[1], 10) << it.name;
        };
        newScene();
        clock("QVSingleVideoTimeSource", video(ghost, 2));
        source->decodeNextFpsWithGroupQueue();
        scene->updateMatrix();
        drawAgain(kBlue);
        expectSeenThrough();
        newScene();
        Dictionary node = quad("QVQuadObject3D", ghost);
        node["TextureInfo"] =
            dictionary({{"textureType", "mp4Video"}, {"texture", Value(ghost)}, {"videoFps", 30}});
        add(Value(node));
        draw(0, kBlue);
        expectSeenThrough();
        for (int frame = 1; frame < 6; ++frame) draw(frame, kBlue);
        expectSeenThrough();  // held, as its last picture
    }
}

TEST_F(VideoSourceTest, TransitionsOfAnotherKindAreHardCutsAndOnlyTheCurrentSceneSpeaks) {
    clock("QVNullVideoTimeSource", noVideo(3),
          dictionary({{"sceneTansitionsType", 5}, {"tansitionsSceneId", 42}, {"fpsTotal", 1}}));
    play();
    EXPECT_THAT(listener->events,
                ::testing::ElementsAre("0 start", "0 load next", "2 transition 0 to 42", "3 complete"));
    newScene();
    listener->events.clear();
    clock("QVNullVideoTimeSource", noVideo(1), dictionary({{"fpsTotal", 1}}));
    driver.current.reset();
    mostTurns = 3;
    play();
    EXPECT_THAT(listener->events, ::testing::ElementsAre("4 start", "5 complete", "6 complete"))
        << "told anew until its scene is the current one";
}

TEST_F(VideoSourceTest, ThePlayerMayDropTheSourceFromWithinItsCallbacks) {
    listener->dropsSource = true;
    clock("QVSingleVideoTimeSource", video(film("film.mp4", 4), 1));
    EXPECT_EQ(play().size(), 2u);
    EXPECT_FALSE(source->isAlive());
    const int textures = liveGLObjects(GLObjectKind::Texture);
    source->cancelDecode();
    EXPECT_EQ(liveGLObjects(GLObjectKind::Texture), textures);
}

TEST_F(VideoSourceTest, OnlyThePresentedSceneKeepsThePaceAndAPauseIsNotCaughtUp) {
    constexpr double frameSeconds = 1 / 50.0;
    const auto paced = [&](QVNullVideoDecode& decode) {
        decode.setRenderManager(&driver);
        decode.setCurrentScene(scene);
        decode.setIsPlayAtActualSpeed(true);
    };
    const auto secondsOf = [](QVNullVideoDecode& decode, int turns) {
        const double start = platform::monotonicSeconds();
        for (int i = 0; i < turns; ++i) decode.decodeNextFpsWithGroupQueue();
        return platform::monotonicSeconds() - start;
    };
    // A busy machine makes turns longer, never shorter.
    QVNullVideoDecode decode(50, 100);
    paced(decode);
    EXPECT_GE(secondsOf(decode, 4), 3 * frameSeconds * 0.98);
    platform::sleepSeconds(10 * frameSeconds);
    platform::NotificationCenter::shared().post(kRefushMultiSceneRenderStartTime);
    EXPECT_GE(secondsOf(decode, 4), 3 * frameSeconds * 0.98)
        << "counted from the frame that the pause reached";
    driver.type = SceneRenderType::TextureTransition;
    QVNullVideoDecode slow(1, 100);
    paced(slow);
    EXPECT_LT(secondsOf(slow, 20), 10) << "of 19 seconds: drawn only as a part of a transition";
}

}  // namespace multiscene::testing
