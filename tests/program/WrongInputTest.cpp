#include <sys/stat.h>

#include <fstream>
#include <functional>

#include "platform/store/FileLock.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Value;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

/// One way to go wrong: what is broken, and how the program answers.
struct WrongInput {
    const char* name;
    int exitCode;
    std::string message;
    std::function<void(SmallTemplate&)> change = [](SmallTemplate&) {};
    std::function<void(const fs::path& folder)> damage = [](const fs::path&) {};
    std::vector<std::string> words = {};  ///< added to "make"; FOLDER stands for the test's folder
};

void PrintTo(const WrongInput& wrong, std::ostream* stream) { *stream << wrong.name; }

void write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }

std::function<void(SmallTemplate&)> showing(const std::string& texture) {
    return [texture](SmallTemplate& small) { small.nodes = {quad("odd", texture)}; };
}

void playVideo(SmallTemplate& small) {
    small.clock = {{"type", "QVSingleVideoTimeSource"},
                   {"VideoInfo", Value::Dictionary{{"msaterVideoPath", "$(currentScenePlistROOT)/film.mp4"},
                                                   {"videoFps", 10}}},
                   {"QuadInfo", Value::Dictionary{{"modelWidth", 64}, {"modelHeight", 96}}},
                   {"FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", 5}}}};
}

void useOwnShader(SmallTemplate& small) {
    Value::Dictionary node = quad("shaded", "$(currentScenePlistROOT)/red.png");
    node["type"] = "QVQuadCustomShaderOneVariable";
    node["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/none.plist"}};
    small.nodes = {node};
}

const std::string outside = "lies outside the template";

std::vector<WrongInput> wrongInputs() {
    using Words = std::vector<std::string>;
    return {
        {"TemplateSyntax",
         3,
         "small.plist",
         {},
         [](const fs::path& at) { write(at / "small.plist", "<plist>"); }},
        {"SceneSyntax",
         3,
         "scene.plist",
         {},
         [](const fs::path& at) { write(at / "scene.plist", "<dict><key>"); }},
        {"SceneFileMissing",
         3,
         "scene.plist",
         {},
         [](const fs::path& at) { fs::remove(at / "scene.plist"); }},
        {"UnknownNode", 3, "object3D[0].type",
         [](SmallTemplate& small) {
             small.nodes = {Value::Dictionary{{"type", "QVQuadObjekt"}}};
         }},
        {"NoClock", 3, "TimeSource", [](SmallTemplate& small) { small.clock = {}; }},
        {"UnknownScene", 3, "sceneGroup[0].mainSceneId",
         [](SmallTemplate& small) {
             small.description["sceneGroup"] = Value::Array{Value::Dictionary{{"mainSceneId", 99}}};
         }},
        {"OddOwnSize", 3, "mediaSize",
         [](SmallTemplate& small) { small.description["mediaSize"] = "65,96"; }},
        {"VideoMissing", 3, "TimeSource.VideoInfo.msaterVideoPath", playVideo},
        {"VideoUnreadable", 3, "TimeSource.VideoInfo.msaterVideoPath", playVideo,
         [](const fs::path& at) { write(at / "film.mp4", "no film at all"); }},
        {"PlaylistAsVideo", 3, "TimeSource.VideoInfo.msaterVideoPath", playVideo,
         [](const fs::path& at) { write(at / "film.mp4", "#EXTM3U\n#EXTINF:1,\n/etc/passwd\n"); }},
        {"UnknownShader", 3, "customShaderPath", useOwnShader},
        {"AbsolutePath", 3, outside, showing("/etc/passwd")},
        {"PathUpwards", 3, outside, showing("$(currentScenePlistROOT)/../secret.png")},
        {"Link", 3, outside, showing("$(currentScenePlistROOT)/link.png"),
         [](const fs::path& at) { fs::create_symlink("/etc/passwd", at / "link.png"); }},
        {"Fifo", 3, "not a regular file", showing("$(currentScenePlistROOT)/pipe.png"),
         [](const fs::path& at) { ::mkfifo((at / "pipe.png").c_str(), 0600); }},
        {"PhotoMissing", 4, "nobody.jpg", {}, {}, Words{"--photo", "photo=FOLDER/nobody.jpg"}},
        {"PhotoIsNone", 4, "small.plist", {}, {}, Words{"--photo", "photo=FOLDER/small/small.plist"}},
        {"TextTooLong", 4, "title: the text has 11 characters", {}, {}, Words{"--text", "title=12345678901"}},
        {"TextTooManyLines", 4, "title: the text has 3 lines", {}, {}, Words{"--text", "title=a\nb\n"}},
        {"UnknownKey", 4, "did you mean \"title\"?", {}, {}, Words{"--text", "titel=x"}},
        {"TextForPhoto", 4, "asks for a photo", {}, {}, Words{"--text", "photo=x"}},
        {"CropOfAnUnknownKey", 4, "did you mean \"photo\"?", {}, {}, Words{"--crop", "foto=0,0,1,1"}},
        {"CropOfAText", 4, "asks for a text", {}, {}, Words{"--crop", "title=0,0,1,1"}},
        {"CropWithoutAPhoto",
         4,
         "photo: a part of the photo is asked for",
         {},
         {},
         Words{"--focus", "photo=0.5,0.5"}},
        {"CropBeyondThePicture", 2, "--crop", {}, {}, Words{"--crop", "photo=0.5,0,0.6,1"}},
        {"FocusAndCrop", 2, "given twice", {}, {}, Words{"--focus", "photo=0,0", "--crop", "photo=0,0,1,1"}},
        {"MusicMissing", 4, "--music", {}, {}, Words{"--music", "FOLDER/none.mp3"}},
        {"MusicTooShortForItsStart",
         2,
         "--music-start: the music lasts 1.00 s",
         {},
         [](const fs::path& at) { writeSound(at / "bg-audio.mp3", 1); },
         Words{"--music-start", "2"}},
        {"OddSize", 2, "--size", {}, {}, Words{"--size", "65x96"}},
        {"HugeSize", 2, "--size: 8192x8192 is too large", {}, {}, Words{"--size", "8192x8192"}},
        {"HugeOwnSize", 3, "mediaSize",
         [](SmallTemplate& small) { small.description["mediaSize"] = "4098,2304"; }},
    };
}

class WrongInputTest : public ProgramTest, public ::testing::WithParamInterface<WrongInput> {};

}  // namespace

TEST_P(WrongInputTest, IsOneClearLineAndLeavesNothing) {
    const WrongInput& wrong = GetParam();
    SmallTemplate small;
    if (wrong.change) wrong.change(small);
    const fs::path path = small.write(folder.path());
    writePicture(folder.path() / "secret.png", 0x0000ff);
    if (wrong.damage) wrong.damage(path);
    std::vector<std::string> words{"make", path, "-o", folder.file("out.mp4")};
    for (std::string word : wrong.words) {
        if (const size_t at = word.find("FOLDER"); at != std::string::npos)
            word.replace(at, 6, folder.path().string());
        words.push_back(word);
    }
    const Result result = multiscene(words);
    EXPECT_EQ(result.exitCode, wrong.exitCode) << result.errors;
    EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(wrong.message));
    EXPECT_THAT(filesNamed("out.mp4"), IsEmpty());
    EXPECT_THAT(leftBehind(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, WrongInputTest, ::testing::ValuesIn(wrongInputs()),
                         [](const auto& wrong) { return std::string(wrong.param.name); });

class OutputTest : public ProgramTest {};

TEST_F(OutputTest, IsJudgedBeforeAnythingIsRendered) {
    const fs::path path = SmallTemplate().write(folder.path());
    const auto answer = [&](const std::string& output) {
        const Result result = multiscene({"make", path, "-o", output});
        EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
        EXPECT_THAT(result.errors, HasSubstr(output));
        EXPECT_THAT(result.output, IsEmpty()) << "it started to render";
        return result.exitCode;
    };
    EXPECT_EQ(answer(""), 2);
    EXPECT_EQ(answer(folder.file("no/such/folder.mp4")), 2);
    EXPECT_EQ(answer(folder.file(std::string(252, 'a') + ".mp4")), 2);
    EXPECT_EQ(answer("/proc/out.mp4"), 1);
    for (const char* name : {"out.gif", "out.webm", "out.MOV"}) EXPECT_EQ(answer(folder.file(name)), 2);
    EXPECT_EQ(answer(folder.path()), 2);
    EXPECT_EQ(answer("/dev/full"), 2);
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(OutputTest, ClearsAwayWhatAKilledProgramLeftThere) {
    const fs::path path = SmallTemplate().write(folder.path());
    const std::string left = folder.file(".out.mp4.12-0123456789abcdef.part");
    const std::string used = folder.file(".out.mp4.13-0123456789abcdef.part");
    const std::string notes = folder.file(".notes.part");
    for (const std::string& file : {left, used, notes}) write(file, "half");
    const auto lock = platform::FileLock::acquire(used);
    EXPECT_EQ(multiscene({"make", path, "-o", folder.file("out.MP4")}).exitCode, 0);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(used)) << "somebody is writing it";
    EXPECT_TRUE(fs::exists(notes));
}

TEST_F(OutputTest, KeepsAnOlderFileWhenTheDiskIsFull) {
    SmallTemplate small;
    small.clock = clockOf(60);
    small.record["fpsLength"] = 60;
    const fs::path path = small.write(folder.path());
    write(folder.path() / "out.mp4", "older");
    std::vector<std::string> words{"prlimit", "--fsize=3000"};
    const auto make = command({"make", path, "-o", folder.file("out.mp4"), "--bitrate", "4M"});
    words.insert(words.end(), make.begin(), make.end());
    const Result result = run(words);
    EXPECT_EQ(result.exitCode, 75) << result.errors;
    EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
    EXPECT_EQ(contentOf(folder.path() / "out.mp4"), "older");
    EXPECT_THAT(leftBehind(), IsEmpty());
}

TEST_F(OutputTest, MissingTemplateIsNamed) {
    for (const std::string& name : {folder.file("nowhere"), std::string("nobody"), std::string("4711")}) {
        const Result result = multiscene({"make", name, "-o", folder.file("out.mp4")});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
        EXPECT_THAT(result.errors, HasSubstr(name));
    }
}

}  // namespace multiscene::test
