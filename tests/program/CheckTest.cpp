#include "app/Check/Checker.h"

#include <fstream>
#include <functional>

#include "app/Check/SceneFormatReference.h"
#include "platform/base/PropertyList.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Value;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

struct Fault {
    const char* name;
    std::string keyPath;  ///< of one finding
    std::string text;     ///< in its message or remedy
    std::function<void(SmallTemplate&)> make;
};

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.name; }

/// Changes the photo's node.
std::function<void(SmallTemplate&)> node(const std::function<void(Value::Dictionary&)>& change) {
    return [change](SmallTemplate& small) {
        Value::Dictionary changed = small.nodes[1].dictionary();
        change(changed);
        small.nodes[1] = changed;
    };
}

std::function<void(SmallTemplate&)> nodeWith(const std::string& key, const Value& value) {
    return node([=](Value::Dictionary& dictionary) { dictionary[key] = value; });
}

std::function<void(SmallTemplate&)> clockWith(const std::string& key, const Value& value) {
    return [=](SmallTemplate& small) { small.clock[key] = value; };
}

std::function<void(SmallTemplate&)> group(const Value::Array& entries) {
    return [=](SmallTemplate& small) {
        small.description["sceneGroup"] = entries;
        small.moreRecords = {recordOf(8, "small", "scene.plist", SmallTemplate::frames)};
    };
}

Value entry(int sId, const std::string& identifier, int transitionFrames = 0, int type = 0) {
    Value::Dictionary entry{{"mainSceneId", sId}, {"sceneIdentifier", identifier}, {identifier, identifier}};
    if (transitionFrames)
        entry["sceneTansitionsInfo"] = Value::Dictionary{
            {"tansitionsSceneId", 8}, {"fpsTotal", transitionFrames}, {"sceneTansitionsType", type}};
    return entry;
}

Value frames(int start, int end) { return Value::Dictionary{{"sartFps", start}, {"endFps", end}}; }

Value range(int start, int end) { return Value::Dictionary{{"startFps", start}, {"endFps", end}}; }

Value childStartingAt(int start) {
    Value::Dictionary child = quad("child", "photo");
    child["FpsInfo"] = range(start, 5);
    return child;
}

void useBrokenShader(SmallTemplate& small) {
    Value::Dictionary node = small.nodes[1].dictionary();
    node["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}};
    small.nodes[1] = node;
    small.shaderSource = "void main() { gl_FragColour = vec4(1.0); }";
}

std::vector<Fault> faults() {
    const Value turned = Value::Dictionary{{"sartFps", 0}, {"endFps", 2}, {"startRotate", "0,0,90"}};
    return {
        {"UnknownKey", "object3D[1].QuadInfos", "did you mean \"QuadInfo\"?",
         nodeWith("QuadInfos", Value::Dictionary{})},
        {"KeyOfAnotherPlace", "object3D[1].modelWidth", "belongs into \"QuadInfo\"",
         nodeWith("modelWidth", 3)},
        {"SpellingOfItems", "object3D[1].TransformArray[0].startFps", "did you mean \"sartFps\"?",
         nodeWith("TransformArray", Value::Array{Value::Dictionary{{"startFps", 0}, {"endFps", 3}}})},
        {"SpellingOfRanges", "object3D[1].FpsInfo.sartFps", "did you mean \"startFps\"?",
         nodeWith("FpsInfo", frames(0, 3))},
        {"WrongType", "object3D[1].QuadInfo.modelWidth", "\"wide\", not a number",
         nodeWith("QuadInfo", Value::Dictionary{{"modelWidth", "wide"}})},
        {"ShortVector", "object3D[1].TransformArray[0].startTranslate", "text of 3 numbers",
         nodeWith("TransformArray",
                  Value::Array{Value::Dictionary{{"sartFps", 0}, {"endFps", 3}, {"startTranslate", "1,2"}}})},
        {"OutOfRange", "object3D[1].FpsInfo.startFps", "at least 0", nodeWith("FpsInfo", range(-1, 3))},
        {"UnknownType", "object3D[1].type", "did you mean \"QVQuadObject3D\"?",
         nodeWith("type", "QVQuadObject3")},
        {"UnknownClock", "TimeSource.type", "did you mean \"QVNullVideoTimeSource\"?",
         clockWith("type", "QVNulVideoTimeSource")},
        {"UnknownChoice", "object3D[1].TextureInfo.textureType", "did you mean \"image\"?",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "imag"}, {"texture", "photo"}})},
        {"NoClock", "", "\"TimeSource\" is missing", [](SmallTemplate& small) { small.clock = {}; }},
        {"ClockWithoutEnd", "TimeSource.FpsInfo", "add the number of the last frame",
         clockWith("FpsInfo", Value::Dictionary{{"startFps", 0}})},
        {"LengthIsNotTheClocks", "installScenes[0].fpsLength", "set it to 6",
         [](SmallTemplate& small) { small.record["fpsLength"] = 5; }},
        {"OddPicture", "installScenes[0].wechartTempletInfo.mediaSize", "odd",
         [](SmallTemplate& small) { small.description["mediaSize"] = "63,96"; }},
        {"EmptyRange", "object3D[1].FpsInfo", "it never happens", nodeWith("FpsInfo", range(4, 2))},
        {"StartsAfterTheEnd", "object3D[1].FpsInfo.startFps", "last frame 5",
         nodeWith("FpsInfo", range(6, 9))},
        {"ChildBeforeParent", "object3D[1].childNode[0].FpsInfo.startFps", "before its parent",
         node([](Value::Dictionary& dictionary) {
             dictionary["FpsInfo"] = range(3, 5);
             dictionary["childNode"] = Value::Array{childStartingAt(1)};
         })},
        {"StalledMotion", "object3D[1].TransformArray[0]", "stalls",
         nodeWith("TransformArray", Value::Array{frames(2, 2), frames(3, 4)})},
        {"PassedOverMotion", "object3D[1].TransformArray[1].sartFps", "passed over",
         nodeWith("TransformArray", Value::Array{frames(0, 2), frames(2, 4)})},
        {"StalledKeys", "object3D[1].AnimationInfo[1].endFps", "stalls",
         nodeWith("AnimationInfo", Value::Array{frames(0, 4), frames(1, 3)})},
        {"RotationWithoutEnd", "object3D[1].TransformArray[0].startRotate", "radians",
         nodeWith("TransformArray", Value::Array{turned})},
        {"MissingFile", "object3D[1].TextureInfo.texture", "does not exist",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"},
                                                   {"texture", "$(currentScenePlistROOT)/none.png"}})},
        {"NoPicture", "object3D[1].TextureInfo.texture", "scene.plist",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"},
                                                   {"texture", "$(currentScenePlistROOT)/scene.plist"}})},
        {"NoMacro", "object3D[1].TextureInfo.texture", "$(currentScenePlistROOT)/red.png",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"}, {"texture", "red.png"}})},
        {"OutsideTheFence", "object3D[1].TextureInfo.texture", "outside",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"}, {"texture", "/etc/passwd"}})},
        {"TextureWithoutSource", "object3D[1].TextureInfo", "shows nothing",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "text2d"}})},
        {"NothingToShow", "object3D[1]", "add \"TextureInfo\"",
         node([](Value::Dictionary& dictionary) { dictionary.erase("TextureInfo"); })},
        {"NoSurface", "object3D[1]", "QVPlaneObject3D", node([](Value::Dictionary& dictionary) {
             dictionary = {{"type", "QVMeshObject3D"}};
         })},
        {"BrokenShader", "object3D[1].FpsInfo.customShaderPath", "gl_FragColour", useBrokenShader},
        {"UnusedInput", "installScenes[0].wechartTempletInfo.userInputArray[1].renderMapKey",
         "no scene looks", [](SmallTemplate& small) { small.nodes.erase(small.nodes.begin() + 1); }},
        {"UnknownSceneOfGroup", "installScenes[0].wechartTempletInfo.sceneGroup[0].mainSceneId", "99",
         group({entry(99, "a")})},
        {"TransitionTooLong",
         "installScenes[0].wechartTempletInfo.sceneGroup[0].sceneTansitionsInfo.fpsTotal", "longer than",
         group({entry(7, "a", 9), entry(8, "b")})},
        {"TransitionThatNeverStarts",
         "installScenes[0].wechartTempletInfo.sceneGroup[0].sceneTansitionsInfo.fpsTotal",
         "the 5 that the ending scene has", group({entry(7, "a", 6), entry(8, "b")})},
        {"TransitionThatLeavesNothing",
         "installScenes[0].wechartTempletInfo.sceneGroup[0].sceneTansitionsInfo.fpsTotal",
         "the 5 that the following scene has", group({entry(7, "a", 6), entry(8, "b")})},
        {"TransitionsThatMeet",
         "installScenes[0].wechartTempletInfo.sceneGroup[1].sceneTansitionsInfo.fpsTotal",
         "the 2 that the ending scene has", group({entry(7, "a", 3), entry(8, "b", 3), entry(7, "c")})},
        {"SecondOverlay", "installScenes[0].wechartTempletInfo.sceneGroup[1].sceneTansitionsInfo",
         "while an overlay runs", group({entry(7, "a", 1, 1), entry(8, "b", 5, 1), entry(7, "c")})},
        {"IdentifierCollision", "installScenes[0].wechartTempletInfo.sceneGroup", "is the key of another",
         [](SmallTemplate& small) {
             Value::Array inputs = small.description["userInputArray"].array();
             inputs.push_back(Value::Dictionary{{"userInputType", 0}, {"renderMapKey", "titleb"}});
             small.description["userInputArray"] = inputs;
             group({entry(7, "a"), entry(8, "b")})(small);
         }},
    };
}

class CheckTest : public ::testing::TestWithParam<Fault> {
  protected:
    TemporaryFolder folder;
};

}  // namespace

TEST_P(CheckTest, NamesPlaceFaultAndRemedy) {
    SmallTemplate small;
    GetParam().make(small);
    const Findings findings = checkPath(small.write(folder.path()));
    std::string all;
    for (const Finding& finding : findings) all += describe(finding) + "\n";
    const bool isNamed = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.keyPath == GetParam().keyPath &&
               (finding.message + "; " + finding.remedy).find(GetParam().text) != std::string::npos;
    });
    EXPECT_TRUE(isNamed) << all;
}

INSTANTIATE_TEST_SUITE_P(All, CheckTest, ::testing::ValuesIn(faults()),
                         [](const auto& fault) { return std::string(fault.param.name); });

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
        for (const Finding& finding : checkPath(path)) all += describe(finding) + "\n";
        EXPECT_THAT(all, HasSubstr(text));
    };
    named("pic1.pvr\": is a PVR file of version 3");
    fs::remove(path / "pic1.pvr");
    named("pic1.pvr\" does not exist");
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
        for (const Finding& finding : checkPath(entry.path())) ADD_FAILURE() << describe(finding);
    }
}

TEST(SceneFormat, CommittedReferenceIsTheGeneratedOne) {
    EXPECT_TRUE(contentOf(MULTISCENE_SOURCE "/docs/scene-format.md") == sceneFormatReference())
        << "run: build/bin/multiscene scene-format > docs/scene-format.md";
}

}  // namespace multiscene::test
