#include "app/check/Checker.h"

#include <fstream>

#include "app/job/PreparedGroup.h"
#include "platform/archive/ZipWriter.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/crypto/Cipher.h"
#include "platform/image/ImageWriter.h"
#include "tests/program/CheckFaults.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

class CheckTest : public ::testing::TestWithParam<Fault> {
  protected:
    TemporaryFolder folder;
};

}  // namespace

TEST_P(CheckTest, NamesPlaceFaultAndRemedy) {
    SmallTemplate small;
    GetParam().make(small);
    const Findings findings = checkPath(small.write(folder.path()), nullptr);
    std::string all;
    for (const Finding& finding : findings) all += describe(finding) + "\n";
    const bool isNamed = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.keyPath == GetParam().keyPath &&
               (finding.message + "; " + finding.remedy).find(GetParam().text) != std::string::npos;
    });
    EXPECT_TRUE(isNamed) << all;
}

/// What a job hears before it draws.
class Listener : public JobObserver {
  public:
    void jobFinding(const Finding& finding) override { heard.push_back(finding); }
    Findings heard;
};

/// The judgement of a job, as findings; what it threw comes last.
Findings judgedByAJob(const fs::path& path, bool& wasThrown) {
    RenderRequest request;
    request.source = path;
    Listener listener;
    try {
        prepareGroup(request, JobFolder(), listener, {});
    } catch (const platform::Error& error) {
        wasThrown = true;
        EXPECT_EQ(error.kind(), platform::ErrorKind::Template);
        listener.heard.push_back({Severity::Error, error.file(), error.key(), error.message(), {}});
    }
    return listener.heard;
}

std::vector<std::string> sentencesOf(const Findings& findings) {
    std::vector<std::string> sentences;
    for (const Finding& finding : findings) sentences.push_back(describe(finding));
    return sentences;
}

TEST_P(CheckTest, AJobSaysTheSameBeforeItDraws) {
    platform::setDataHome(folder.path() / "home");
    SmallTemplate small;
    GetParam().make(small);
    const fs::path path = small.write(folder.path());
    const Findings checked = checkPath(path, nullptr);
    bool wasThrown = false;
    const Findings judged = judgedByAJob(path, wasThrown);
    EXPECT_EQ(wasThrown, std::any_of(checked.begin(), checked.end(), [](const Finding& finding) {
                  return finding.severity == Severity::Error;
              }));
    EXPECT_THAT(sentencesOf(judged), ::testing::UnorderedElementsAreArray(sentencesOf(checked)));
}

INSTANTIATE_TEST_SUITE_P(All, CheckTest, ::testing::ValuesIn(faults()),
                         [](const auto& fault) { return fault.param.name; });

TEST(CheckSequence, SaysWhichPictureIsNoneAndWhy) {
    const TemporaryFolder folder;
    SmallTemplate small;
    const std::string place = "$(currentScenePlistROOT)/pic";
    nodeWith("TextureInfo", Value::Dictionary{{"textureType", "textureSerial"},
                                              {"imageType", 2},
                                              {"animationStart", 1},
                                              {"animationEnd", 2},
                                              {"animationName", place},
                                              {"animationExtension", "pvr"}})(small);
    const fs::path path = small.write(folder.path());
    std::ofstream(path / "pic1.pvr") << std::string("PVR\3", 4) + std::string(60, '\0');
    const auto named = [&](const std::string& text) {
        std::string all;
        for (const Finding& finding : checkPath(path, nullptr)) all += describe(finding) + "\n";
        EXPECT_THAT(all, HasSubstr(text));
    };
    named("pic1.pvr\": is a PVR file of version 3");
    fs::remove(path / "pic1.pvr");
    named("pic1.pvr\" does not exist");
}

TEST(CheckSequence, JudgesAsManyPicturesAsTheTableSays) {
    const TemporaryFolder folder;
    const int most = platform::limitOf<int>("maxSequencePictures");
    for (const int last : {most, most + 1}) {
        SmallTemplate small;
        nodeWith("TextureInfo", Value::Dictionary{{"textureType", "textureSerial"},
                                                  {"animationStart", 1},
                                                  {"animationEnd", last},
                                                  {"animationName", "$(currentScenePlistROOT)/pic"},
                                                  {"animationExtension", "png"}})(small);
        const fs::path path = small.write(folder.path());
        std::error_code isThere;
        for (int number = 1; number < last; ++number)
            fs::create_hard_link(path / "red.png", path / ("pic" + std::to_string(number) + ".png"), isThere);
        std::string found;
        for (const Finding& finding : checkPath(path, nullptr)) found += describe(finding) + "\n";
        const std::string missing = "pic" + std::to_string(last) + ".png\" does not exist";
        EXPECT_EQ(found.find(missing) != std::string::npos, last <= most) << found.substr(0, 1000);
    }
}

class CheckProgramTest : public ProgramTest {};

TEST_F(CheckProgramTest, ExitCodeTellsWhetherAnythingIsWrong) {
    SmallTemplate small;
    const fs::path path = small.write(folder.path());
    const Result clean = multiscene({"check", path});
    EXPECT_EQ(clean.exitCode, 0) << clean.output;
    EXPECT_EQ(multiscene({"check", path / "scene.plist"}).exitCode, 0);

    small.record["fpsLength"] = 1;
    small.write(folder.path());
    const Result faulty = multiscene({"check", path, "--json"});
    EXPECT_EQ(faulty.exitCode, 3);
    ASSERT_EQ(faulty.jsonLines().size(), 2u);
    EXPECT_EQ(faulty.jsonLines()[0].string("key"), "installScenes[0].fpsLength");
    EXPECT_EQ(faulty.jsonLines()[1].integer("errors"), 1);
}

TEST_F(CheckProgramTest, WarningsAloneAreForTheAuthorToJudge) {
    SmallTemplate small;
    nodeWith("childNode", Value::Array{childStartingAt(0)})(small);
    nodeWith("FpsInfo", range(2, 5))(small);  // a child that starts before its parent
    const fs::path path = small.write(folder.path());
    const auto answer = [&](std::vector<std::string> words) {
        const Result result = multiscene(std::move(words));
        EXPECT_THAT(result.output + result.errors, HasSubstr("before its parent"));
        return result.exitCode;
    };
    const std::string pictures = folder.file("pictures");
    EXPECT_EQ(answer({"check", path}), 0);
    EXPECT_EQ(answer({"check", path, "--strict"}), 3);
    EXPECT_EQ(answer({"frames", path, "--at", "0", "-o", pictures}), 0);
    EXPECT_EQ(answer({"trace", path, "--at", "0"}), 0);
    EXPECT_EQ(answer({"frames", path, "--at", "0", "-o", pictures, "--strict"}), 3);
}

TEST_F(CheckProgramTest, StrictJobsRefuseWhatWouldBeNoted) {
    const fs::path path = SmallTemplate().write(folder.path());
    std::vector<std::string> words{"frames",   path,     "--at",    "0", "-o", folder.file("pictures"),
                                   "--strict", "--text", "title=Hi"};
    const Result missing = multiscene(words);
    EXPECT_EQ(missing.exitCode, 4);
    EXPECT_THAT(missing.errors, HasSubstr("photo: is not given"));
    writePicture(folder.path() / "me.png", 0x00ff00);
    words.insert(words.end(), {"--photo", "photo=" + folder.file("me.png")});
    EXPECT_EQ(multiscene(words).exitCode, 0);
    words.insert(words.end(), {"--fps", "20"});
    EXPECT_EQ(multiscene(words).exitCode, 4) << "another rate changes the speed";
    EXPECT_EQ(multiscene({"frames", path, "-o", folder.file("p"), "--strict", "--force"}).exitCode, 2);
}

TEST_F(CheckProgramTest, ForceGoesOnUnlessNothingCouldBePlayed) {
    SmallTemplate small;
    image("$(currentScenePlistROOT)/none.png")(small);
    fs::path path = small.write(folder.path());
    const auto frames = [&](std::vector<std::string> more) {
        std::vector<std::string> words{"frames", path, "--at", "0", "-o", folder.file("pictures")};
        words.insert(words.end(), more.begin(), more.end());
        return multiscene(words);
    };
    const Result refused = frames({});
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_EQ(refused.errorLines().size(), 1u) << refused.errors;
    EXPECT_THAT(refused.errors, HasSubstr("none.png\" does not exist"));
    EXPECT_TRUE(fs::is_empty(folder.path() / "pictures"));
    const Result forced = frames({"--force"});
    EXPECT_EQ(forced.exitCode, 0) << forced.errors;
    EXPECT_THAT(forced.output, HasSubstr("none.png\" does not exist"));

    small.clock = {};
    path = small.write(folder.path());
    const Result endless = frames({"--force"});
    EXPECT_EQ(endless.exitCode, 3);
    EXPECT_THAT(endless.errors, HasSubstr("no clock"));
}

TEST_F(CheckProgramTest, ATransitionToNoSceneIsNone) {
    for (const int sceneId : {0, -1}) {
        SmallTemplate small;
        const Value::Dictionary transition{
            {"tansitionsSceneId", sceneId}, {"fpsTotal", 3}, {"sceneTansitionsType", 0}};
        small.description["sceneGroup"] =
            Value::Array{entry(7, "a").with("sceneTansitionsInfo", Value(transition)), entry(8, "b")};
        small.moreRecords = {recordOf(8, "small", "scene.plist", SmallTemplate::frames)};
        const fs::path path = small.write(folder.path());
        const Result checked = multiscene({"check", path, "--strict"});
        EXPECT_EQ(checked.exitCode, 0) << checked.output;
        const Result traced = multiscene({"trace", path});
        EXPECT_EQ(traced.exitCode, 0) << traced.errors;
        const auto lines = traced.jsonLines();
        ASSERT_EQ(lines.size(), 12u) << "both scenes whole, one after the other";
        for (const Value& line : lines) EXPECT_EQ(line.array("scenes").size(), 1u);
    }
}

TEST_F(CheckProgramTest, AnArchiveHoldsOneFolderAndNothingElse) {
    const fs::path path = SmallTemplate().write(folder.path());
    std::vector<platform::ZipSource> files;
    for (const std::string name : {"small.plist", "scene.plist", "red.png"})
        files.push_back({"small/" + name, path / name});
    const std::string archive = folder.file("small.zip"), pictures = folder.file("pictures");
    const std::vector<std::vector<std::string>> commands{{"check", archive},
                                                         {"frames", archive, "--at", "0", "-o", pictures},
                                                         {"make", archive, "-o", folder.file("out.mp4")},
                                                         {"templates", "install", archive}};
    for (const std::string beside : {"other/red.png", "readme.txt"}) {
        std::vector<platform::ZipSource> more = files;
        more.push_back({beside, path / "red.png"});
        platform::writeZip(archive, more);
        for (const auto& words : commands) {
            const Result result = multiscene(words);
            EXPECT_EQ(result.exitCode, 3) << words[0];
            EXPECT_THAT(result.errors, HasSubstr("holds \"" + beside.substr(0, beside.find('/')) +
                                                 "\" beside the folder \"small\""))
                << words[0];
        }
    }
    platform::writeZip(archive, files);
    for (const auto& words : commands) EXPECT_EQ(multiscene(words).exitCode, 0) << words[0];
}

TEST_F(CheckProgramTest, AGroupFileIsJudgedAgainstTheCatalogueAsItIsPlayed) {
    SmallTemplate small;
    small.moreRecords = {recordOf(8, "small", "scene.plist", SmallTemplate::frames)};
    const fs::path path = small.write(folder.path());
    std::vector<platform::ZipSource> files;
    for (const std::string name : {"small.plist", "scene.plist", "red.png"})
        files.push_back({"small/" + name, path / name});
    platform::writeZip(folder.file("small.zip"), files);
    ASSERT_EQ(multiscene({"templates", "install", folder.file("small.zip")}).exitCode, 0);
    fs::remove_all(path);
    writePicture(folder.path() / "me.png", 0x00ff00);

    const std::string group = folder.file("group.plist");
    const auto write = [&](const Value::Array& entries, int frames) {
        // Every value under its key and under key + identifier, as a job writes them.
        platform::writePropertyList(
            group, Value::Dictionary{{"scene", entries},
                                     {"sceneGroupFpsTotal", frames},
                                     {"userMediaMap", Value::Dictionary{{"title", "A"},
                                                                        {"titlea", "A"},
                                                                        {"titleb", "B"},
                                                                        {"photo", folder.file("me.png")},
                                                                        {"photoa", folder.file("me.png")}}}});
    };
    write({entry(7, "a"), entry(8, "b")}, 12);
    const Result checked = multiscene({"check", group, "--strict"});
    EXPECT_EQ(checked.exitCode, 0) << checked.output;
    const std::vector<std::string> frames{"frames", group,  "--size", "64x96", "--fps",
                                          "10",     "--at", "0",      "-o",    folder.file("pictures")};
    EXPECT_EQ(multiscene(frames).exitCode, 0) << multiscene(frames).errors;

    write({entry(7, "a", 9), entry(8, "b")}, 3);
    for (const auto& words : {std::vector<std::string>{"check", group}, frames}) {
        const Result faulty = multiscene(words);
        EXPECT_EQ(faulty.exitCode, 3) << words[0];
        EXPECT_THAT(faulty.output + faulty.errors,
                    HasSubstr("the transition of 9 frames is longer than the 5 that the ending scene has"));
    }
}

TEST_F(CheckProgramTest, BrokenSyntaxAndStrangeFilesAreFindings) {
    const std::pair<const char*, const char*> files[] = {{"a.plist", "<plist><dict>"},
                                                         {"b.plist", "<plist><array/></plist>"},
                                                         {"c.plist", "<plist><dict/></plist>"}};
    for (const auto& [name, text] : files) {
        std::ofstream(folder.path() / name) << text;
        const Result result = multiscene({"check", folder.file(name)});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_THAT(result.output, HasSubstr(name));
    }
    EXPECT_EQ(multiscene({"check", folder.file("none.plist")}).exitCode, 3);
}

TEST(SampleTemplates, AreClean) {
    for (const auto& entry : fs::directory_iterator(MULTISCENE_SOURCE "/templates")) {
        if (!entry.is_directory()) continue;
        for (const Finding& finding : checkPath(entry.path(), nullptr)) ADD_FAILURE() << describe(finding);
    }
}

}  // namespace multiscene::test
