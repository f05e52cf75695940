
#include <algorithm>
#include <fstream>

#include "app/data/QVDataManager.h"
#include "app/installation/TemplateInstallation.h"
#include "platform/archive/ZipWriter.h"
#include "platform/base/Json.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

/// ffprobe's view of a file.
Value probe(const std::string& file) {
    const Result result = run(
        {"ffprobe", "-v", "error", "-count_packets", "-show_streams", "-show_format", "-of", "json", file});
    return platform::parseJson(result.output, "ffprobe");
}

const Value& stream(const Value& probed, const std::string& type) {
    static const Value none;
    for (const Value& candidate : probed.array("streams"))
        if (candidate.string("codec_type") == type) return candidate;
    return none;
}

/// Width of the picture that a node of the current scene shows in a traced frame.
int64_t widthShownBy(const Value& frame, const std::string& name) {
    for (const Value& node : frame.array("scenes")[0].array("nodes"))
        if (node.string("name") == name) return node["texture"].integer("width");
    return -1;
}

class MakeTest : public ProgramTest {
  protected:
    std::string output(const std::string& name = "out.mp4") const { return folder.file(name); }

    void pack(const fs::path& path) const {
        platform::writeZip(folder.path() / "packed.zip", {{"small/small.plist", path / "small.plist"},
                                                          {"small/scene.plist", path / "scene.plist"},
                                                          {"small/red.png", path / "red.png"}});
    }

    void install() const {
        pack(SmallTemplate().write(folder.path()));
        platform::setDataHome(folder.path() / "home");
        QVDataManager catalogue(QVDataManager::databasePath());
        TemplateInstallation(catalogue, "small").install(folder.path() / "packed.zip");
    }

    /// A file of the user's.
    std::string photo(const std::string& name, int width = 40, int height = 20) const {
        writePicture(folder.path() / name, 0x00ff00, width, height);
        return folder.file(name);
    }
};

}  // namespace

TEST_F(MakeTest, WritesAFilmWithItsSound) {
    SmallTemplate small;
    const auto path = small.write(folder.path());
    writeSound(path / "bg-audio.mp3", 0.3);
    const Result result = multiscene(
        {"make", path, "--text", "title=Hi", "--photo", "photo=" + photo("me.png"), "-o", output()});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("6 frames"));
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_THAT(leftBehind(), IsEmpty());

    const Value probed = probe(output());
    const Value& video = stream(probed, "video");
    EXPECT_EQ(video.string("codec_name"), "h264");
    EXPECT_EQ(video.string("pix_fmt"), "yuv420p");
    EXPECT_EQ(video.integer("width"), 64);
    EXPECT_EQ(video.integer("height"), 96);
    EXPECT_EQ(video.string("r_frame_rate"), "10/1");
    EXPECT_EQ(video.integer("nb_read_packets"), SmallTemplate::frames);
    EXPECT_NEAR(video["start_time"].doubleValue(), 0.1, 1e-6);
    EXPECT_EQ(video.string("color_space"), "smpte170m");
    EXPECT_EQ(stream(probed, "audio").string("codec_name"), "aac");
}

TEST_F(MakeTest, GivesTheSameFileEveryTimeAndOnOneCore) {
    const auto path = SmallTemplate().write(folder.path());
    writeSound(path / "bg-audio.mp3", 2);
    const std::vector<std::string> inputs{"--text", "title=Hello", "--photo", "photo=" + photo("me.png")};
    const auto make = [&](std::vector<std::string> before, const std::string& name) {
        std::vector<std::string> words = command({"make", path, "-o", output(name)});
        words.insert(words.end(), inputs.begin(), inputs.end());
        before.insert(before.end(), words.begin(), words.end());
        const Result result = run(before);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return contentOf(output(name));
    };
    const std::string first = make({}, "first.mp4");
    ASSERT_FALSE(first.empty());
    EXPECT_TRUE(first == make({}, "second.mp4"));
    EXPECT_TRUE(first == make({"taskset", "-c", "0"}, "third.mp4"));
}

TEST_F(MakeTest, NamesWhatItLeftOutOnceAndCarriesOn) {
    SmallTemplate small;
    small.nodes.push_back(quad("gone", "$(currentScenePlistROOT)/gone.png"));
    Value::Dictionary shaded = quad("shaded", "$(currentScenePlistROOT)/red.png");
    shaded["type"] = "QVQuadCustomShaderOneVariable";
    shaded["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}};
    small.nodes.push_back(shaded);
    small.shaderSource = "no shader";
    const Result result = multiscene(
        {"make", small.write(folder.path()), "--text", "title=Hi", "-o", output(), "--json", "--force"});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const Value done = result.jsonLines().back();
    ASSERT_EQ(done.string("event"), "done");
    ASSERT_EQ(done.array("skipped").size(), 2u) << result.output;
    const Value &shader = done.array("skipped")[0], &picture = done.array("skipped")[1];
    EXPECT_THAT(picture.string("name"), HasSubstr("gone.png"));
    EXPECT_EQ(picture.string("node"), "gone");
    EXPECT_THAT(shader.string("name"), HasSubstr("own.fsh"));
    EXPECT_EQ(shader.string("node"), "shaded");
    EXPECT_EQ(done["missingInputs"], Value(Value::Array{"photo"}));
    EXPECT_LT(result.output.find("not given"), result.output.find("\"progress\"")) << result.output;
}

TEST_F(MakeTest, CountsLettersAsReadersDoAndNotesATextThatIsALittleTooLong) {
    const auto path = SmallTemplate().write(folder.path());
    const auto notesOf = [&](const std::string& title) {
        const Result result = multiscene({"frames", path, "--at", "0", "--text", "title=" + title, "-o",
                                          folder.file("pictures"), "--json"});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        std::string notes;
        for (const Value& line : result.jsonLines())
            if (line.string("event") == "note" && line.string("message").find("title") != std::string::npos)
                notes += line.string("message") + "\n";
        return notes;
    };
    EXPECT_EQ(notesOf("12345"), "");
    EXPECT_EQ(notesOf("👨‍👩‍👧‍👦👍🏽🇩🇪नि\u0065\u0301"), "")
        << "five for a reader, 18 code points";
    EXPECT_EQ(notesOf("1234567890"),
              "\"title\" has 10 characters; the template has room for 5: the letters become smaller\n");
    EXPECT_THAT(notesOf("a\nb"), HasSubstr("has 2 lines; the template has room for 1"));
}

/// How many columns of a picture file hold white.
int whiteColumns(const fs::path& file) {
    const platform::Bitmap picture = pictureIn(file);
    int columns = 0;
    for (int x = 0; x < picture.width; ++x) {
        bool isWhite = false;
        for (int y = 0; y < picture.height; ++y) isWhite = isWhite || picture.pixel(x, y)[1] > 128;
        columns += isWhite;
    }
    return columns;
}

TEST_F(MakeTest, MakesLettersInTheSceneSmallerWhereATextIsTooLong) {
    SmallTemplate small;
    Value::Dictionary letters = small.nodes.back().dictionary();
    letters["type"] = "QVGLFont2DTextureFontObject3D";
    letters["TextureFontInfo"] = Value::Dictionary{
        {"textString", "title"}, {"fontName", "DejaVu Sans"}, {"fontSize", 12}, {"textColor", "1,1,1,1"}};
    letters.erase("TextureInfo");
    letters.erase("QuadInfo");
    small.nodes.back() = letters;
    small.description["sceneGroup"] =
        Value::Array{Value::Dictionary{{"mainSceneId", SmallTemplate::sId}, {"sceneIdentifier", "a"}}};
    const auto path = small.write(folder.path());
    const auto widthOf = [&](const std::vector<std::string>& titles) {
        std::vector<std::string> words{"frames", path, "--at", "0", "-o", folder.file("pictures")};
        for (const std::string& title : titles) words.insert(words.end(), {"--text", title});
        const Result result = multiscene(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return whiteColumns(folder.file("pictures") + "/frame-000000.png");
    };
    const int wide = widthOf({"title=█████"});
    EXPECT_GT(wide, 40);
    EXPECT_NEAR(widthOf({"title=██████████"}), wide, 2);
    EXPECT_EQ(widthOf({"title=██████████", "titlea=█████"}), wide) << "the scene's own text is short";
    EXPECT_NEAR(widthOf({"title=█████", "titlea=██████████"}), wide, 2);
}

TEST_F(MakeTest, NamesLettersThatNoFontHas) {
    SmallTemplate small;
    Value::Dictionary solid = quad("solid", "");
    solid["type"] = "QVGLFont3DExtrudeFontObject3D";
    solid["TextureFontInfo"] = Value::Dictionary{{"textString", "a\U0010FFFE"}};
    solid.erase("TextureInfo");
    solid.erase("QuadInfo");
    small.nodes.push_back(solid);
    const Result result = multiscene({"frames", small.write(folder.path()), "--at", "0", "--text",
                                      "title=a\U0010FFFF", "-o", folder.file("pictures")});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("left out U+10FFFF: letters that cannot be drawn"));
    EXPECT_THAT(result.output, HasSubstr("left out U+10FFFE: letters that cannot be drawn"));
}

TEST_F(MakeTest, NamesWhatItUsedOtherwiseButNotAsLeftOut) {
    SmallTemplate small;
    Value::Dictionary node = quad("loud", "$(currentScenePlistROOT)/red.png");
    node["ComponentsInfo"] =
        Value::Array{Value::Dictionary{{"type", "QVObject3DSoundSourceComponent"},
                                       {"audioFilePath", "$(currentScenePlistROOT)/long.wav"},
                                       {"audioVolume", 1},
                                       {"startFps", 0},
                                       {"endFps", 2}}};
    small.nodes.push_back(node);
    const auto path = small.write(folder.path());
    writeSound(path / "long.wav", 2);
    const std::vector<std::string> words{"make", path, "--text", "title=Hi", "-o", output()};
    const Result result = multiscene(words);
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("long.wav is longer than its time in the scene"));
    EXPECT_THAT(result.output, Not(HasSubstr("left out")));
    std::vector<std::string> json = words;
    json.emplace_back("--json");
    const Value done = multiscene(json).jsonLines().back();
    EXPECT_THAT(done.array("skipped"), IsEmpty());
    EXPECT_EQ(done.array("usedOtherwise").size(), 1u);
}

TEST_F(MakeTest, TakesInputsFromAFileAndLetsTheCommandLineWin) {
    const auto path = SmallTemplate().write(folder.path());
    photo("me.png");
    std::ofstream(folder.path() / "inputs.json") << R"({"title": "far too long", "photo": "me.png"})";
    const std::vector<std::string> words{"make", path, "--media", folder.file("inputs.json"), "-o", output()};
    EXPECT_EQ(multiscene(words).exitCode, 4);
    std::vector<std::string> better = words;
    better.insert(better.end(), {"--text", "title=Hello"});
    EXPECT_EQ(multiscene(better).exitCode, 0);
}

TEST_F(MakeTest, GivesEachSceneItsValuesWhetherItHasAnIdentifierOrNot) {
    SmallTemplate small;
    const Value::Dictionary transition{{"tansitionsSceneId", 9}, {"fpsTotal", 2}, {"sceneTansitionsType", 1}};
    small.description["sceneGroup"] =
        Value::Array{Value::Dictionary{{"mainSceneId", 7}, {"sceneTansitionsInfo", transition}},
                     Value::Dictionary{{"mainSceneId", 8}, {"sceneIdentifier", "b"}}};
    small.moreRecords = {recordOf(8, "small", "scene.plist", SmallTemplate::frames),
                         recordOf(9, "small", "overlay.plist", 2)};
    const auto path = small.write(folder.path());
    SmallTemplate overlay;
    overlay.nodes = {};
    overlay.clock = clockOf(2);
    platform::writePropertyList(path / "overlay.plist", overlay.scene());
    const Result result =
        multiscene({"trace", path, "--photo", "photo=" + photo("me.png", 30, 10), "--at", "0,11"});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const auto lines = result.jsonLines();
    ASSERT_EQ(lines.size(), 2u);
    for (const Value& line : lines)
        EXPECT_EQ(widthShownBy(line, "photo"), 10) << "cropped to a square: " << result.output;
    EXPECT_EQ(lines[1].array("scenes")[0].string("identifier"), "b");
}

TEST_F(MakeTest, PlaysASceneGroupFileAgainstTheCatalogueOfTheHome) {
    platform::writePropertyList(
        folder.path() / "group.plist",
        Value::Dictionary{{"scene", Value::Array{Value::Dictionary{{"mainSceneId", 7}}}},
                          {"userMediaMap", Value::Dictionary{}},
                          {"sceneGroupFpsTotal", 6}});
    const std::vector<std::string> words{
        "render", folder.file("group.plist"), "--size", "64x96", "--fps", "10", "-o", output()};
    const Result result = multiscene(words);
    EXPECT_EQ(result.exitCode, 3) << "an empty catalogue has no such scene";
    EXPECT_THAT(result.errors, HasSubstr("scene[0].mainSceneId"));
    EXPECT_EQ(multiscene({"render", folder.file("group.plist"), "-o", output()}).exitCode, 2);

    install();
    EXPECT_EQ(multiscene(words).exitCode, 0);
    const std::string rendered = contentOf(output());
    for (const std::string name : {"7", "small"}) {
        // The group file gives no text, so the scene shows the key itself.
        const Result made = multiscene({"make", name, "--text", "title=title", "-o", output()});
        EXPECT_EQ(made.exitCode, 0) << made.errors;
        EXPECT_TRUE(contentOf(output()) == rendered) << name;
    }
}

TEST_F(MakeTest, PlaysAZipLikeItsFolder) {
    pack(SmallTemplate().write(folder.path()));
    const auto frame = [&](const std::string& source, const std::string& name) {
        const Result result = multiscene(
            {"frames", folder.file(source), "--at", "2", "--text", "title=Hi", "-o", folder.file(name)});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return contentOf(folder.path() / name / "frame-000002.png");
    };
    EXPECT_TRUE(frame("small", "a") == frame("packed.zip", "b"));
    EXPECT_EQ(multiscene({"check", folder.file("packed.zip")}).exitCode, 0);
    EXPECT_THAT(leftBehind(), IsEmpty());
}

TEST_F(MakeTest, WarnsThatAnotherRateChangesTheSpeed) {
    const Result result =
        multiscene({"make", SmallTemplate().write(folder.path()), "--fps", "20", "-o", output()});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(result.output, HasSubstr("0.30 s instead of 0.60 s"));
    EXPECT_EQ(stream(probe(output()), "video").string("r_frame_rate"), "20/1");
}

}  // namespace multiscene::test
