#include <sys/file.h>
#include <unistd.h>

#include <array>

#include "platform/image/ImageWriter.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

class FramesTest : public ProgramTest {
  protected:
    std::map<std::string, std::string> frames(const std::string& name, std::vector<std::string> options) {
        std::vector<std::string> words{"frames", path, "-o", folder.file(name), "--text", "title=Hi"};
        words.insert(words.end(), options.begin(), options.end());
        const Result result = multiscene(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(folder.path() / name))
            files[entry.path().filename()] = contentOf(entry.path());
        return files;
    }

    fs::path path = SmallTemplate().write(folder.path());
};

}  // namespace

TEST_F(FramesTest, AreTheSameBytesHoweverTheyAreChosen) {
    const auto all = frames("all", {});
    ASSERT_EQ(all.size(), static_cast<size_t>(SmallTemplate::frames));
    EXPECT_EQ(all.begin()->first, "frame-000000.png");
    EXPECT_TRUE(all == frames("again", {}));
    const auto some = frames("some", {"--at", "5,0"});
    ASSERT_EQ(some.size(), 2u);
    EXPECT_TRUE(some.at("frame-000005.png") == all.at("frame-000005.png"));
    EXPECT_EQ(frames("third", {"--every", "3"}).size(), 2u);
}

TEST_F(FramesTest, ShowThePartOfAPhotoThatTheUserChose) {
    // Blue beside green beside yellow; the template wants a square.
    platform::Bitmap photo(90, 30);
    for (size_t i = 0; i < photo.rgba.size(); i += 4) {
        const size_t third = i / 4 % 90 / 30;
        photo.rgba[i] = third == 2 ? 255 : 0;
        photo.rgba[i + 1] = third > 0 ? 255 : 0;
        photo.rgba[i + 2] = third == 0 ? 255 : 0;
        photo.rgba[i + 3] = 255;
    }
    platform::writePng(folder.file("me.png"), photo);
    const auto middleOf = [&](std::vector<std::string> options) {
        options.insert(options.end(), {"--photo", "photo=" + folder.file("me.png"), "--at", "0"});
        frames("chosen", options);
        const platform::Bitmap frame = pictureIn(folder.file("chosen/frame-000000.png"));
        const uint8_t* pixel = frame.pixel(frame.width / 2, frame.height / 2);
        return std::string(pixel[0] > 128 ? "r" : "") + (pixel[1] > 128 ? "g" : "") +
               (pixel[2] > 128 ? "b" : "");
    };
    EXPECT_EQ(middleOf({"--crop", "photo=0,0,0.33,1"}), "b");
    EXPECT_EQ(middleOf({"--crop", "photo=0.34,0,0.33,1"}), "g");
    EXPECT_EQ(middleOf({"--focus", "photo=1,0.5"}), "rg");
    // On its side: as wide as the photo is high, three times as high as it is wide.
    EXPECT_EQ(middleOf({"--crop", "photo=0.333333,-1,0.333333,3,90"}), "g");
    platform::writeFileAtomically(folder.file("media.json"), R"({"photo": {"file": "me.png", "crop":
        {"x": 0.25, "y": 0.25, "width": 0.166667, "height": 0.5, "angle": 90}}})");
    frames("turned", {"--media", folder.file("media.json"), "--at", "0"});
    const platform::Bitmap turned = pictureIn(folder.file("turned/frame-000000.png"));
    EXPECT_LT(turned.pixel(turned.width / 2, turned.height / 2 + 12)[1], 128) << "what lies left is below";
    EXPECT_GT(turned.pixel(turned.width / 2, turned.height / 2 - 12)[1], 128);
}

TEST_F(FramesTest, AndFilmsOfAnotherShapeSquashNothing) {
    // The template is 64 x 96 and shows a red square of its whole width in the middle.
    SmallTemplate square;
    square.nodes.resize(1);
    path = square.write(folder.path() / "square");
    const auto shown = [&](const std::string& file) {
        const platform::Bitmap frame = pictureIn(file);
        EXPECT_EQ(frame.size(), (platform::ImageSize{96, 64}));
        const auto isRed = [&](int x, int y) { return frame.pixel(x, y)[0] > 210; };
        int across = 0, down = 0;
        for (int x = 0; x < frame.width; ++x) across += isRed(x, 32);
        for (int y = 0; y < frame.height; ++y) down += isRed(48, y);
        const int beside = frame.pixel(4, 32)[0];
        return std::array{across, down, beside > 210 ? 2 : beside > 30 ? 1 : 0};
    };
    struct Case {
        const char* fit;
        int across, down, beside;
    };
    for (const Case& wanted : {Case{"", 42, 42, 1},
                               {"blur", 42, 42, 1},
                               {"pad", 42, 42, 0},
                               {"crop", 96, 64, 2},
                               {"stretch", 96, 64, 2}}) {
        std::vector<std::string> options{"--size", "96x64"};
        if (*wanted.fit) options.insert(options.end(), {"--fit", wanted.fit});
        const std::string film = folder.file("film.mp4"), picture = folder.file("film.png");
        std::vector<std::string> make{"make", path, "-o", film, "--bitrate", "4M"},
            frames{"frames", path, "-o", folder.file("out"), "--at", "0"};
        for (auto* words : {&make, &frames}) {
            words->insert(words->end(), options.begin(), options.end());
            const Result result = multiscene(*words);
            ASSERT_EQ(result.exitCode, 0) << result.errors;
            EXPECT_THAT(result.output, HasSubstr("another shape than the template's 64x96"));
        }
        ASSERT_EQ(run({"ffmpeg", "-v", "error", "-y", "-i", film, "-frames:v", "1", picture}).exitCode, 0);
        for (const std::string& file : {folder.file("out/frame-000000.png"), picture}) {
            const auto [across, down, beside] = shown(file);
            EXPECT_NEAR(across, wanted.across, 3) << wanted.fit << " " << file;
            EXPECT_NEAR(down, wanted.down, 3) << wanted.fit << " " << file;
            EXPECT_EQ(beside, wanted.beside) << wanted.fit << " " << file;
        }
    }
    square.description["fit"] = "crop";
    path = square.write(folder.path() / "cut");
    frames("own", {"--size", "96x64", "--at", "0"});
    EXPECT_EQ(shown(folder.file("own/frame-000000.png"))[2], 2) << "the template's own choice";
}

TEST_F(FramesTest, ShowWhatTheVideoShowsUnlessTheyKeepAlpha) {
    // Half a red square over nothing, 64 of 96 rows high.
    SmallTemplate glass;
    Value::Dictionary pane = quad("pane", "$(currentScenePlistROOT)/red.png");
    pane["type"] = "QVQuadDiaphaneityObject3D";
    pane["AnimationInfo"] = Value::Array{
        Value::Dictionary{{"sartFps", 0}, {"endFps", 9}, {"startRenderAlpha", 0.5}, {"endRenderAlpha", 0.5}}};
    glass.nodes = {pane};
    path = glass.write(folder.path() / "glass");
    const auto pixelsOf = [&](std::vector<std::string> options) {
        const std::string name = "pictures" + std::to_string(options.size());
        options.insert(options.end(), {"--at", "0"});
        frames(name, options);
        const platform::Bitmap picture = pictureIn(folder.file(name) + "/frame-000000.png");
        const auto pixel = [&](int x, int y) {
            return std::vector<int>(picture.pixel(x, y), picture.pixel(x, y) + 4);
        };
        return std::array{pixel(32, 48), pixel(32, 2)};
    };
    EXPECT_EQ(pixelsOf({}), (std::array<std::vector<int>, 2>{{{128, 0, 0, 255}, {0, 0, 0, 255}}}));
    // Decoding multiplies by alpha: over black this is the same red.
    EXPECT_EQ(pixelsOf({"--alpha"}), (std::array<std::vector<int>, 2>{{{128, 0, 0, 128}, {0, 0, 0, 0}}}));
}

TEST_F(FramesTest, BeyondTheEndNameTheLastFrameAndLeaveNone) {
    for (const char* command : {"frames", "trace"}) {
        std::vector<std::string> words{command, path, "--at", "2,6"};
        if (command == std::string("frames")) words.insert(words.end(), {"-o", folder.file("none")});
        const Result result = multiscene(words);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_THAT(result.errors, HasSubstr("the last frame is 5"));
    }
    EXPECT_TRUE(fs::is_empty(folder.path() / "none"));
}

TEST_F(FramesTest, BeyondTheEndAreRefusedBeforeAnythingIsPlayed) {
    SmallTemplate endless;
    endless.name = "endless";
    endless.clock = clockOf(1'000'000'000);
    endless.record = recordOf(8, "endless", "scene.plist", 1'000'000'000);
    const Result result =
        multiscene({"frames", endless.write(folder.path()), "--at", "1000000000", "-o", folder.file("none")});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, HasSubstr("the last frame is 999999999"));
}

TEST_F(FramesTest, AreCountedTheSameInEveryRun) {
    SmallTemplate longer;
    longer.name = "longer";
    longer.clock = clockOf(1000);
    longer.record = recordOf(8, "longer", "scene.plist", 1000);
    const Result result =
        multiscene({"frames", longer.write(folder.path()), "--at", "0", "--json", "-o", folder.file("one")});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const Value done = result.jsonLines().back();
    EXPECT_EQ(done.integer("frames"), 1);
    EXPECT_DOUBLE_EQ(done["videoSeconds"].doubleValue(), 0.1);
}

TEST_F(FramesTest, TakeThePlaceOfEarlierOnesAndOfNothingElse) {
    frames("used", {"--at", "0,1,5"});
    for (const char* other : {"frame-1.png", "frame-00000x.png", "cover.png"})
        writePicture(folder.path() / "used" / other, 0x00ff00);
    EXPECT_EQ(multiscene({"frames", path, "--at", "6", "-o", folder.file("used")}).exitCode, 2);
    EXPECT_TRUE(fs::exists(folder.path() / "used/frame-000005.png")) << "a refused job took it away";
    std::vector<std::string> names;
    for (const auto& [name, content] : frames("used", {"--at", "1,2"})) names.push_back(name);
    EXPECT_THAT(names, ::testing::ElementsAre("cover.png", "frame-000001.png", "frame-000002.png",
                                              "frame-00000x.png", "frame-1.png"));
}

TEST_F(FramesTest, OfTwoJobsNeverLieSideBySide) {
    frames("used", {"--at", "0"});
    const fs::path used = folder.path() / "used";
    platform::FileHandle other = platform::openFile(used, O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(::flock(other.descriptor(), LOCK_EX), 0);
    Process process(command({"frames", path, "--at", "1", "-o", used}));
    ::usleep(1'000'000);  // enough for one that does not wait
    writePicture(used / "frame-000009.png", 0x00ff00);
    other.reset();
    EXPECT_EQ(process.finish().exitCode, 0);
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(used)) names.push_back(entry.path().filename());
    EXPECT_THAT(names, ::testing::ElementsAre("frame-000001.png"));
}

TEST_F(FramesTest, AreTracedTheSameDrawnOrNot) {
    const Result plain = multiscene({"trace", path});
    const Result drawn = multiscene({"trace", path, "--draw"});
    ASSERT_EQ(plain.exitCode, 0) << plain.errors;
    EXPECT_EQ(plain.output, drawn.output);
    const auto lines = plain.jsonLines();
    ASSERT_EQ(lines.size(), static_cast<size_t>(SmallTemplate::frames));
    for (size_t frame = 0; frame < lines.size(); ++frame)
        EXPECT_EQ(lines[frame].integer("frame"), static_cast<int64_t>(frame));
    const Value& scene = lines[3].array("scenes")[0];
    EXPECT_EQ(scene.integer("sceneId"), SmallTemplate::sId);
    EXPECT_EQ(scene.integer("time"), 3);
    EXPECT_EQ(scene["camera"].array("projection").size(), 16u);
}

}  // namespace multiscene::test
