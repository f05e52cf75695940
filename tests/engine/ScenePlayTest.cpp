// Whole scenes played from their files: what the pictures show, what a trace lists, which sounds start.
#include <array>
#include <cmath>
#include <fstream>
#include <map>

#include "output/PictureSink.h"
#include "output/SoundSink.h"
#include "platform/base/Json.h"
#include "tests/engine/PlayFixture.h"

namespace multiscene {
namespace {

using testing::clock;
using testing::Dictionary;
using testing::flatScene;
using testing::isNear;
using testing::levelOf;
using testing::Pixel;
using testing::texturedQuad;
using testing::transition;
using testing::Value;

constexpr Pixel kRed{255, 0, 0, 255}, kGreen{0, 255, 0, 255}, kBlue{0, 0, 255, 255},
    kWhite{255, 255, 255, 255};

Value list(Value::Array items) { return Value(std::move(items)); }
Value entry(Dictionary keys) { return Value(std::move(keys)); }

/// Where a colour is seen, in pixels from the upper left; right and bottom are exclusive.
struct Box {
    int left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const Box&) const = default;
};
void PrintTo(const Box& box, std::ostream* out) {
    *out << box.left << "," << box.top << " to " << box.right << "," << box.bottom;
}

/// Writes down which sounds start and stop, and at which frame of the group.
class SoundNotes : public SoundSink {
  public:
    void addAudioTrackWithInfo(const Value& info) override {
        notes.push_back("+" + info.string("audioName") + " " + std::to_string(info.integer("fpsStart")) +
                        "-" + std::to_string(info.integer("fpsEnd")));
    }
    void deleteChannelWithKey(const std::string& name, bool) override { notes.push_back("-" + name); }
    std::vector<std::string> notes;
};

class ScenePlay : public testing::PlayFixture {
  protected:
    ScenePlay() { renderer_ = Renderer::GL; }

    static constexpr int side = 32;  ///< pixels of the picture, and units of a flat scene

    std::string picture(const std::string& name, const Pixel& color) const {
        return testing::writePicture(folder_ / name, {color});
    }

    /// A square of one colour, or whatever `texture` (a path, or a key of the user) shows, around (x, y, z).
    Dictionary square(const std::string& texture, double size, const std::string& place = "0,0,0",
                      Dictionary more = {}) const {
        Dictionary node =
            texturedQuad("QVQuadObject3D", {{"textureType", "image"}, {"texture", texture}}, size, size);
        node["TransformArray"] = list({entry({{"sartFps", 0}, {"endFps", 99}, {"startTranslate", place}})});
        for (auto& [key, value] : more) node[key] = value;
        return node;
    }
    static Value frames(int64_t first, int64_t last) {
        return entry({{"startFps", first}, {"endFps", last}});
    }
    static Value camera(double width, Dictionary more = {}) {
        more.insert({{"type", "QVOrthCamera"}, {"OrthWidth", width}, {"aspect", 1}});
        return Value(std::move(more));
    }

    /// Plays the scenes that were added to the group; keeps every picture and every frame's trace, and counts
    /// the textures that are loaded.
    void playAll(const Value& usersMap = {}, bool draws = true, std::shared_ptr<SoundSink> sounds = {}) {
        const auto keep = [this](const PictureSink::Picture& shown) {
            auto& pixels = pictures_[shown.frame];
            pixels.assign(shown.rgba, shown.rgba + size_t{side * side * 4});
        };
        create(draws ? std::make_shared<PictureSink>(side, side, keep) : nullptr, std::move(sounds));
        driver_->setFrameSampleBlock([this](int64_t) {
            traces_.push_back(SceneTrace::frame(*driver_));
            textures_.push_back(liveGLObjects(GLObjectKind::Texture));
        });
        player_->loadSceneGroup(group(scenes_, usersMap));
        pumpUntil([&] { return completions_ + failures_ > 0; });
        driver_->performOnRenderQueue([] {});
        EXPECT_EQ(completions_, 1);
    }
    void playScene(const Value& scene, bool draws = true) {
        addScene(1, scene);
        scenes_.clear();
        traces_.clear();
        pictures_.clear();
        completions_ = 0;
        play(1);
        playAll({}, draws);
    }

    Pixel at(int64_t frame, int x, int y) {
        Pixel pixel{};
        const auto& pixels = pictures_[frame];
        if (!pixels.empty()) std::copy_n(pixels.begin() + (y * side + x) * 4, 4, pixel.begin());
        return pixel;
    }
    Box boxOf(int64_t frame, const Pixel& color) {
        Box box{side, side, 0, 0};
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                if (isNear(at(frame, x, y), color, 2))
                    box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                           std::max(box.bottom, y + 1)};
        return box;
    }

    /// A node in a frame's trace, by its name.
    Value traced(size_t frame, const std::string& name) const {
        for (const Value& scene : traces_.at(frame).array("scenes"))
            for (const Value& node : scene.array("nodes"))
                if (node.string("name") == name) return node;
        ADD_FAILURE() << name << " is not in the trace of frame " << frame;
        return {};
    }
    /// One element of a traced list in the first frames.
    std::vector<double> course(const std::string& name, const std::string& field, size_t element,
                               size_t frames) const {
        std::vector<double> numbers;
        for (size_t frame = 0; frame < frames; ++frame)
            numbers.push_back(traced(frame, name).array(field).at(element).doubleValue());
        return numbers;
    }
    static void expectNear(const std::vector<double>& actual, const std::vector<double>& expected,
                           const char* what) {
        ASSERT_EQ(actual.size(), expected.size()) << what;
        for (size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-3) << what << i;
    }

    std::map<int64_t, std::vector<uint8_t>> pictures_;
    std::vector<Value> traces_;
    std::vector<int> textures_;
};

TEST_F(ScenePlay, ANodesOwnCameraSeesItAndAllBelowAndMoves) {
    const std::string red = picture("red.png", kRed), green = picture("green.png", kGreen),
                      blue = picture("blue.png", kBlue), white = picture("white.png", kWhite);
    // Sees twice as much as the scene's camera, and goes 32 units to the left in four frames.
    const Value move = entry({{"sartFps", 0},
                              {"endFps", 4},
                              {"isMoveCameraPosition", true},
                              {"startMoveCameraPosition", "0,0,0"},
                              {"endMoveCameraPosition", "-32,0,0"}});
    const Value inner = entry(
        {{"type", "QVObject3DTransformBase"}, {"childNode", list({Value(square(green, 16, "0,-24,0"))})}});
    const Value group =
        entry({{"type", "QVObject3DTransformBase"},
               {"CameraInfo", camera(64, {{"LookAtAnimation", list({move})}})},
               {"childNode", list({Value(square(red, 16)), inner,
                                   Value(square(blue, 8, "-12,12,0", {{"CameraInfo", camera(side)}}))})}});
    playScene(flatScene(side, side, clock(4), {group, Value(square(white, 8, "-12,-12,0"))}));
    for (const int frame : {0, 2}) {
        const int shift = frame * 4;
        EXPECT_EQ(boxOf(frame, kRed), (Box{12 + shift, 12, 20 + shift, 20})) << frame;
        EXPECT_EQ(boxOf(frame, kGreen), (Box{12 + shift, 24, 20 + shift, 32})) << frame;
        EXPECT_EQ(boxOf(frame, kBlue), (Box{0, 0, 8, 8})) << "a child with a camera of its own";
        EXPECT_EQ(boxOf(frame, kWhite), (Box{0, 24, 8, 32})) << "a neighbour";
    }
}

TEST_F(ScenePlay, TheScenesLightsMoveAndLightNodesWithoutLightsOfTheirOwn) {
    const Value moving = entry({{"lightSourceType", 2},
                                {"ambientMaterialColor", "0.1,0.1,0.1"},
                                {"diffuseMaterialColor", "0.8,0.4,0"},
                                {"AnimationInfo", list({entry({{"sartFps", 0},
                                                               {"endFps", 10},
                                                               {"startLightSourcePosition", "0,0,1"},
                                                               {"endLightSourcePosition", "1,0,0"}})})}});
    const Value still = entry({{"lightSourceType", 2}, {"diffuseMaterialColor", "0,0,0.5"}});
    const std::string grey = picture("grey.png", {200, 200, 200, 255});
    const auto wall = [&](Dictionary placement, Dictionary more) {
        placement["endFps"] = 99;
        more.insert({{"type", "QVPlaneObject3D"},
                     {"TextureInfo", entry({{"textureType", "image"}, {"texture", grey}})},
                     {"MeshInfo", entry({{"modelWidth", side / 2}, {"modelHeight", side}})},
                     {"FpsInfo", entry({{"isLightEnable", true}})},
                     {"TransformArray", list({Value(std::move(placement))})}});
        return Value(std::move(more));
    };
    // Turned by half a right angle and drawn out: it faces the light with 2 of the square root of 5.
    const Dictionary turned{
        {"startTranslate", "8,0,0"}, {"startRotate", "0,0.785398,0"}, {"startScale", "2,1,1"}};
    const Value scene = flatScene(
        side, side, clock(5),
        {wall({{"startTranslate", "-8,0,0"}}, {}), wall(turned, {{"LightSourceArray", list({still})}})});
    playScene(scene.with("LightSourceArray", list({moving})));
    for (const int frame : {0, 5}) {
        const double facing = frame == 0 ? 1 : std::sqrt(0.5);
        const auto level = [&](double diffuse) { return uint8_t(200 * (0.1 + diffuse * facing) + 0.5); };
        EXPECT_TRUE(isNear(at(frame, 8, 16), {level(0.8), level(0.4), level(0), 255}, 2)) << frame;
        EXPECT_TRUE(isNear(at(frame, 24, 16), {0, 0, 89, 255}, 2)) << frame;
    }
}

TEST_F(ScenePlay, AFilmThatClocksItsSceneLiesBehindAndItsHeldFrameStartsNothingAnew) {
    const std::string behind = testing::writeFilm(folder_ / "behind.mp4", 4),
                      above = testing::writeFilm(folder_ / "above.mp4", 3);
    Dictionary film = texturedQuad(
        "QVQuadObject3D", {{"textureType", "mp4Video"}, {"texture", above}, {"videoFps", 30}}, 16, 16);
    film["FpsInfo"] = frames(3, 99);
    const Value source = entry({{"type", "QVSingleVideoTimeSource"},
                                {"VideoInfo", entry({{"msaterVideoPath", behind}, {"videoFps", 30}})},
                                {"QuadInfo", entry({{"modelWidth", side}, {"modelHeight", side}})},
                                {"FpsInfo", frames(0, 99)}});
    playScene(
        flatScene(side, side, source, {Value(film), Value(square(picture("red.png", kRed), 8, "-12,12,0"))}));
    // The last frame has no picture of its own and repeats the number 3.
    ASSERT_EQ(pictures_.size(), 5u);
    for (const int frame : {0, 1, 2, 3, 4}) {
        EXPECT_NEAR(at(frame, 30, 30)[0], levelOf(std::min(frame, 3)), 4) << frame;
        EXPECT_NEAR(at(frame, 16, 16)[0], levelOf(frame < 3 ? frame : frame - 3), 4) << frame;
        EXPECT_TRUE(isNear(at(frame, 4, 4), kRed, 2)) << "of equal depth, and read after the film";
    }
}

TEST_F(ScenePlay, MovesAreStampedWithTheFrameThatStartsThem) {
    const Value walks = platform::parseJson(R"([
        {"sartFps": 0, "endFps": 4, "startTranslate": "0,0,0", "endTranslate": "8,0,0",
         "startScale": "1,1,1", "endScale": "3,3,3", "startRotate": "0,0,0", "endRotate": "0,0,80",
         "startTextureOrigin": "0,0", "endTextureOrigin": "0.5,0",
         "startTextureSize": "1,1", "endTextureSize": "0.5,1"},
        {"sartFps": 6, "endFps": 10, "endTranslate": "10,0,0", "endScale": "4.5,4.5,4.5",
         "endRotate": "0,0,90"}])",
                                            "walks");
    playScene(
        flatScene(
            side, side, clock(9),
            {entry({{"type", "QVObject3DTransformBase"}, {"name", "walker"}, {"TransformArray", walks}})}),
        false);
    expectNear(course("walker", "position", 0, 9), {0, 2, 4, 6, 6, 6, 6, 7, 8}, "x at frame ");
    // What a second item does not name as its start is where the first one got to: its last frame is not
    // played.
    expectNear(course("walker", "scale", 0, 9), {1, 1.5, 2, 2.5, 2.5, 2.5, 2.5, 3, 3.5}, "scale at frame ");
    // The angle is carried on as the number of its radians, as if they were degrees.
    const double carried = 60 / 57.29583, step = (90 - carried) / 4;
    expectNear(course("walker", "rotation", 2, 9),
               {0, 20, 40, 60, 60, 60, carried, carried + step, carried + 2 * step}, "angle at frame ");
    // The texture alone goes all the way.
    expectNear(course("walker", "textureMatrix", 12, 9), {0, 0.125, 0.25, 0.375, 0.5, 0.5, 0.5, 0.5, 0.5},
               "texture at frame ");
}

TEST_F(ScenePlay, AGroupThatIsNotDueMovesNeitherItselfNorItsChildren) {
    const Value walk = list(
        {entry({{"sartFps", 0}, {"endFps", 4}, {"startTranslate", "0,0,0"}, {"endTranslate", "8,0,0"}})});
    const Value slide = list({entry({{"transformType", 0},
                                     {"fpsStart", 0},
                                     {"fpsEnd", 10},
                                     {"startTranslate", "0,0,0"},
                                     {"endTranslate", "10,0,0"}})});
    playScene(flatScene(side, side, clock(5),
                        {entry({{"type", "QVObject3DTransformBase"},
                                {"name", "late"},
                                {"FpsInfo", frames(2, 9)},
                                {"TransformArray", walk},
                                {"MutableTransformArray", slide},
                                {"childNode", list({entry({{"type", "QVObject3DTransformBase"},
                                                           {"name", "child"},
                                                           {"TransformArray", walk}})})}})}),
              false);
    // The list's first frame has passed when the group comes; the other kind of move is where it is.
    EXPECT_EQ(course("late", "position", 0, 6), (std::vector<double>(6, 0)));
    EXPECT_EQ(course("child", "position", 0, 6), (std::vector<double>(6, 0)));
    expectNear(course("late", "transform", 12, 6), {0, 0, 2, 3, 4, 5}, "frame ");
}

TEST_F(ScenePlay, TurnsAreMadeAboutXThenYThenZAndAPathAlongZBearsTheNameGivenForY) {
    const auto path = [](const char* name, Value::Array points) {
        return entry({{"bezierIdentifier", name},
                      {"interpolationTotal", 4},
                      {"interpolationXYZ", 32},
                      {"controlPoints", Value(std::move(points))}});
    };
    const auto mutableItem = [](int type, Dictionary more) {
        more.insert({{"transformType", type}, {"fpsStart", 0}, {"fpsEnd", 4}});
        return list({Value(std::move(more))});
    };
    const Value angles = Value("30,60,90");
    playScene(
        flatScene(
            side, side, clock(2),
            {entry({{"type", "QVObject3DTransformBase"},
                    {"name", "still"},
                    {"TransformArray",
                     list({entry({{"endFps", 4}, {"startRotate", "0.5235988,1.0471976,1.5707963"}})})}}),
             entry({{"type", "QVObject3DTransformBase"},
                    {"name", "moved"},
                    {"MutableTransformArray",
                     mutableItem(2, {{"startRotate", angles}, {"endRotate", angles}})}}),
             entry({{"type", "QVObject3DTransformBase"},
                    {"name", "path"},
                    {"BezierArray", list({path("30001", {"0,0", "100,40"}), path("30002", {"0,0", "7,9"})})},
                    {"MutableTransformArray", mutableItem(0, {{"endTranslate", "4,30001,30002"}})}})}),
        false);
    // The images of the three axes, worked out by hand: sines and cosines of 30, 60 and 90 degrees.
    const double half = 0.5, root = std::sqrt(0.75);
    const std::vector<double> turned{0, root, half,         0,           -half, -half * root, root * root,
                                     0, root, -half * half, root * half, 0};
    for (const char* name : {"still", "moved"}) {
        std::vector<double> axes;
        for (size_t i = 0; i < 12; ++i)
            axes.push_back(traced(0, name).array("transform").at(i).doubleValue());
        expectNear(axes, turned, name);
    }
    const auto place = traced(2, "path").array("transform");
    EXPECT_EQ(place.at(12).doubleValue(), 2);
    EXPECT_EQ(place.at(13).doubleValue(), 50);
    EXPECT_EQ(place.at(14).doubleValue(), 20);
}

TEST_F(ScenePlay, CamerasThatSayNothingUsefulSee75Degrees) {
    const auto widthOf = [&](const Value& cameraInfo) {
        Dictionary scene{{"TimeSource", clock(0)}};
        if (cameraInfo) scene["Camera"] = cameraInfo;
        playScene(Value(scene), false);
        return traces_.at(0).array("scenes")[0]["camera"].array("projection").at(0).doubleValue();
    };
    const auto cotangent = [](double degrees) { return 1 / std::tan(degrees / 2 * std::acos(-1) / 180); };
    EXPECT_NEAR(widthOf({}), cotangent(75), 1e-4);
    EXPECT_NEAR(widthOf(entry({{"type", "QVFishCamera"}, {"FrustumFov", 20}})), cotangent(75), 1e-4);
    EXPECT_NEAR(widthOf(entry({{"type", "QVFrustumCamera"}})), cotangent(75), 1e-4);
    EXPECT_NEAR(widthOf(entry({{"type", "QVFrustumCamera"}, {"FrustumFov", 0}})), cotangent(75), 1e-4);
    EXPECT_NEAR(widthOf(entry({{"type", "QVFrustumCamera"}, {"FrustumFov", 60}})), cotangent(60), 1e-4);
}

TEST_F(ScenePlay, CamerasSeeAsFarAsTheyShould) {
    const std::string red = picture("red.png", kRed);
    const auto seen = [&](const Value& cameraInfo, const std::array<double, 4>& depths, bool isPerspective) {
        Value::Array nodes;
        for (size_t i = 0; i < 4; ++i) {
            // Side by side, each an eighth of what the camera sees there.
            const double unit = isPerspective ? -depths[i] / 16 : 1;
            const std::string place =
                std::to_string((8.0 * double(i) - 12) * unit) + ",0," + std::to_string(depths[i]);
            nodes.emplace_back(square(red, 4 * unit, place));
        }
        playScene(flatScene(side, side, clock(0), std::move(nodes)).with("Camera", cameraInfo));
        std::string found;
        for (const int x : {4, 12, 20, 28}) found += at(0, x, 16)[0] > 128 ? "seen " : "- ";
        return found;
    };
    EXPECT_EQ(seen(camera(side), {995, 1005, -2495, -2505}, false), "seen - seen - ");
    const Value perspective = entry({{"type", "QVFrustumCamera"}, {"FrustumFov", 90}, {"aspect", 1}});
    EXPECT_EQ(seen(perspective, {-0.95, -1.05, -2450, -2550}, true), "- seen seen - ");
}

TEST_F(ScenePlay, AnAnimationsEaseMayBeACurveOfItsNode) {
    Dictionary fading = square(picture("red.png", kRed), side);
    fading["type"] = "QVQuadDiaphaneityObject3D";
    fading["AnimationInfo"] = list({entry(
        {{"sartFps", 0}, {"endFps", 4}, {"ease", 30001}, {"startRenderAlpha", 0}, {"endRenderAlpha", 1}})});
    fading["BezierArray"] = list({entry({{"bezierIdentifier", "30001"},
                                         {"interpolationTotal", 4},
                                         {"interpolationXYZ", 21},
                                         {"controlPoints", list({"0,0", "1,0.4"})}})});
    playScene(flatScene(side, side, clock(2), {Value(fading)}));
    EXPECT_TRUE(isNear(at(2, 16, 16), {51, 0, 0, 51}, 2)) << "0.2 at half the way";
}

TEST_F(ScenePlay, DepthIsTestedUntilTheNodesOrItsFirstChildsBracketCloses) {
    const std::string red = picture("red.png", kRed), blue = picture("blue.png", kBlue);
    const Value tested = entry({{"isEnableDephTest", true}}), plain = entry({{"startFps", 0}});
    // The red square lies in front and is drawn first; below it lie the same two in a group.
    const auto pair = [&](const char* front, const char* back, const Value& ofFront, const Value& ofBack) {
        return Value::Array{Value(square(red, 16, front, {{"FpsInfo", ofFront}})),
                            Value(square(blue, 16, back, {{"FpsInfo", ofBack}}))};
    };
    const auto shown = [&](const Value& ofFront, const Value& ofBack, const Value& ofGroup) {
        Value::Array nodes = pair("0,8,5", "0,8,-5", ofFront, ofBack);
        nodes.push_back(entry({{"type", "QVObject3DTransformBase"},
                               {"FpsInfo", ofGroup},
                               {"childNode", list(pair("0,-8,5", "0,-8,-5", ofFront, ofBack))}}));
        playScene(flatScene(side, side, clock(0), std::move(nodes)));
        const auto nameOf = [&](int y) { return at(0, 16, y)[0] > 128 ? "red" : "blue"; };
        return std::string(nameOf(8)) + " " + nameOf(24);
    };
    EXPECT_EQ(shown(tested, tested, plain), "red red");
    EXPECT_EQ(shown(tested, plain, plain), "blue blue");
    EXPECT_EQ(shown(plain, plain, tested), "blue blue");
}

TEST_F(ScenePlay, SoundsKeepTheirOwnFramesWithinTheirNodes) {
    std::ofstream(folder_ / "pop.wav") << "sound";
    const auto sound = [&](const char* key, const Value& first, const Value& last) {
        return entry({{"type", "QVObject3DSoundSourceComponent"},
                      {"startFps", first},
                      {"endFps", last},
                      {"audioFilePath", (folder_ / "pop.wav").string()},
                      {"audioVolume", 1},
                      {"audioKey", key}});
    };
    const auto node = [&](const Value& fpsInfo, Value::Array sounds) {
        return entry({{"type", "QVObject3DTransformBase"},
                      {"FpsInfo", fpsInfo},
                      {"ComponentsInfo", list(std::move(sounds))}});
    };
    addScene(1, flatScene(side, side, clock(9),
                          {node(frames(0, 9), {sound("users", "first", "last")}),
                           node(frames(4, 6), {sound("before", 3, 5), sound("within", 5, 6),
                                               sound("longer", 6, 50), sound("after", 7, 8)})}));
    scenes_.push_back(entry({{"mainSceneId", 1}, {"sceneIdentifier", "-one"}}));
    const auto notes = std::make_shared<SoundNotes>();
    playAll(entry({{"first", 1}, {"last", 2}, {"first-one", 3}, {"last-one", "7"}}), false, notes);
    // A sound whose first frame passes before its node is due is never heard; an end that the node does not
    // live to see is left to the mix.
    EXPECT_EQ(notes->notes, (std::vector<std::string>{"+users-one 3-7", "+within-one 5-6", "-before-one",
                                                      "+longer-one 6-50", "-within-one", "-users-one"}));
}

TEST_F(ScenePlay, AnOverlayHasNoIdentifierAndEndedScenesLeaveNoMotionBehind) {
    const std::string red = picture("red.png", kRed), blue = picture("blue.png", kBlue);
    const auto walking = [&](const char* key) {
        const Value walk = entry({{"endFps", 9000}, {"startTranslate", "0,0,0"}, {"endTranslate", "9,9,9"}});
        return Value(square(key, side, "0,0,0", {{"name", key}, {"TransformArray", list({walk})}}));
    };
    addScene(1, flatScene(side, side, clock(4), {walking("photo")}));
    addScene(2, 6);
    addScene(9, flatScene(side, side, clock(3), {walking("veil")}));
    scenes_.push_back(entry(
        {{"mainSceneId", 1}, {"sceneIdentifier", "one"}, {"sceneTansitionsInfo", transition(9, 2, 1)}}));
    play(2);
    playAll(entry({{"photoone", red}, {"photo", blue}, {"veil", red}, {"veilone", blue}}));
    ASSERT_EQ(traces_.size(), 12u);
    EXPECT_EQ(traced(3, "photo")["texture"].string("path"), red);
    EXPECT_EQ(traced(3, "veil")["texture"].string("path"), red);
    // Counted before a frame is drawn; a picture is uploaded when it is drawn first.
    EXPECT_EQ(textures_, (std::vector<int>{0, 1, 1, 1, 2, 1, 1, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace multiscene
