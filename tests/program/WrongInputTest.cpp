#include "platform/base/Json.h"
#include "platform/store/FileLock.h"
#include "tests/program/CheckFaults.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

void write(const fs::path& file, const std::string& text) { platform::writeFileAtomically(file, text); }

Value::Array wrongInputs() {
    const std::string listed = contentOf(MULTISCENE_SOURCE "/tests/program/wrong-inputs.json");
    return platform::parseJson(listed, "wrong-inputs.json").array();
}

class WrongInputTest : public ProgramTest, public ::testing::WithParamInterface<Value> {};

}  // namespace

TEST_P(WrongInputTest, IsOneClearLineAndLeavesNothing) {
    const Value& wrong = GetParam();
    SmallTemplate small;
    makeFault(wrong, small);
    const fs::path path = small.write(folder.path());
    writePicture(folder.path() / "secret.png", 0x0000ff);
    std::vector<std::string> words{"make", path, "-o", folder.file("out.mp4")};
    for (const Value& each : wrong.array("words")) {
        std::string word = each.stringValue();
        if (const size_t at = word.find("FOLDER"); at != std::string::npos)
            word.replace(at, 6, folder.path().string());
        words.push_back(word);
    }
    const Result result = multiscene(words);
    EXPECT_EQ(result.exitCode, wrong.integer("code")) << result.errors;
    EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(wrong.string("says")));
    EXPECT_THAT(filesNamed("out.mp4"), IsEmpty());
    EXPECT_THAT(leftBehind(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, WrongInputTest, ::testing::ValuesIn(wrongInputs()),
                         [](const auto& wrong) { return wrong.param.string("name"); });

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

TEST_F(OutputTest, TakesThePlaceOfWhatALinkLeadsTo) {
    const fs::path path = SmallTemplate().write(folder.path()), link = folder.path() / "link.mp4";
    fs::create_symlink("out.mp4", link);
    for (const char* time : {"new", "again"}) {
        EXPECT_EQ(multiscene({"make", path, "-o", link}).exitCode, 0) << time;
        EXPECT_TRUE(fs::is_symlink(link) && fs::is_regular_file(folder.path() / "out.mp4")) << time;
    }
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
