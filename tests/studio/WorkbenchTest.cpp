// A template on the workbench: what is saved is told, drawn and judged.
#include <fcntl.h>

#include "platform/base/PropertyList.h"
#include "platform/image/ImageDecoder.h"
#include "studio/access/SessionStore.h"
#include "tests/studio/JobsFixture.h"

namespace multiscene::studio {
namespace {

namespace fs = std::filesystem;
using platform::Value;
using testing::HasSubstr;

class WorkbenchTest : public JobsFixture {
  protected:
    static constexpr const char* kBase = "/api/v1/workbench";

    void SetUp() override {
        JobsFixture::SetUp();
        Value::Dictionary group = test::quad("group", "$(currentScenePlistROOT)/red.png");
        Value::Dictionary child = test::quad("mover", "$(currentScenePlistROOT)/red.png");
        child["MutableTransformArray"] = Value::Array{Value::Dictionary{{"transformType", 0},
                                                                        {"fpsStart", 1},
                                                                        {"fpsEnd", 4},
                                                                        {"startTranslate", "900,0,0"},
                                                                        {"endTranslate", "906,0,0"}}};
        group["childNode"] = Value::Array{child};
        // What is drawn first stands last in the file.
        Value::Dictionary background = made.nodes.front().dictionary();
        background["FpsInfo"] = Value::Dictionary{{"startFps", 0}, {"endFps", 1000}, {"RenderDepth", 50}};
        made.nodes.front() = group;
        made.nodes.push_back(background);
        workbench = made.write(home / "author");
        fs::create_directory(workbench / "sample");
        std::ofstream(workbench / "sample/inputs.json") << R"({"title":"Hi"})";
    }

    void begin() {
        studio = std::make_unique<Studio>(settings, workbench);
        me = browser();
    }
    Value state() const { return get(kBase, me).json(); }
    /// The state once it is so.
    Value waitFor(const std::string& what, const std::function<bool(const Value&)>& isSo) const {
        for (int tries = 0; tries < 3000; ++tries) {
            if (const Value now = state(); isSo(now)) return now;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        ADD_FAILURE() << what << " does not come: " << platform::jsonText(state());
        return {};
    }
    Value waitUntilJudged(int64_t revision) const {
        return waitFor("a judged state", [&](const Value& now) {
            return now.integer("revision") >= revision && now.integer("checked") == now.integer("revision");
        });
    }
    /// Red, green and blue at the picture's left edge, above the text.
    std::array<int, 3> edgeOf(const std::string& path) const {
        const Reply reply = get(kBase + path, me);
        EXPECT_EQ(reply.status, 200) << path << reply.body;
        const fs::path file = home / "still";
        std::ofstream(file, std::ios::binary) << reply.body;
        const auto picture = platform::decodeImage(platform::FileHandle(::open(file.c_str(), O_RDONLY)));
        const uint8_t* const pixel = picture.pixel(3, picture.height / 4);
        return {pixel[0], pixel[1], pixel[2]};
    }
    fs::path file(const char* name) const { return workbench / name; }

    test::SmallTemplate made;
    fs::path workbench;
};

MATCHER_P(IsNearly, color, "") {
    for (size_t i = 0; i < 3; ++i)
        if (std::abs(arg[i] - color[i]) > 25) return false;
    return true;
}
constexpr std::array kRed{255, 0, 0}, kBlue{0, 0, 255};

TEST_F(WorkbenchTest, WhatIsSavedIsToldDrawnAndJudged) {
    test::writePicture(file("red.png"), 0xff0000);
    begin();
    const Value first = waitUntilJudged(1);
    EXPECT_EQ(first["video"].integer("frames"), test::SmallTemplate::frames);
    EXPECT_TRUE(first["problem"].isNone()) << platform::jsonText(first);
    EXPECT_THAT(edgeOf("/frames/2.jpg"), IsNearly(kRed));

    platform::test::HttpClient events(studio->port());
    events.send(std::string("GET ") + kBase + "/events HTTP/1.1\r\n" + hostLine() + me.lines() + "\r\n");
    events.readUntil("event: state");
    test::writePicture(file("red.png"), 0x0000ff);
    events.readUntil("event: saved");
    EXPECT_THAT(edgeOf("/frames/2.jpg"), IsNearly(kBlue)) << "whoever was told gets the new one";

    // Half a file.
    const auto scene = test::contentOf(file("scene.plist"));
    std::ofstream(file("scene.plist")) << scene.substr(0, scene.size() / 2);
    events.readUntil("event: saved");
    const Value broken = waitUntilJudged(3);
    EXPECT_EQ(broken["problem"].string("file"), "scene.plist") << platform::jsonText(broken);
    EXPECT_EQ(broken.integer("shown"), 2);
    ASSERT_FALSE(broken.array("findings").empty());
    EXPECT_EQ(broken.array("findings")[0].string("severity"), "error");
    EXPECT_THAT(edgeOf("/frames/5.jpg"), IsNearly(kBlue)) << "the last good state";

    // Whole again, and wrong in a line.
    std::string wrong = scene;
    const size_t at = wrong.find("<key>modelHeight</key>");
    ASSERT_NE(at, std::string::npos);
    wrong.insert(at, "<key>modelDepth</key><integer>1</integer>\n");
    std::ofstream(file("scene.plist")) << wrong;
    const Value mended = waitUntilJudged(4);
    ASSERT_FALSE(mended.array("findings").empty());
    const Value& finding = mended.array("findings")[0];
    EXPECT_EQ(finding.string("file"), "scene.plist");
    EXPECT_THAT(finding.string("key"), HasSubstr("modelDepth"));
    EXPECT_EQ(finding.integer("line"),
              1 + std::count(wrong.begin(), wrong.begin() + static_cast<long>(at), '\n'));

    std::ofstream(file("scene.plist")) << scene;
    const Value well = waitUntilJudged(5);
    EXPECT_TRUE(well["problem"].isNone()) << platform::jsonText(well);
    EXPECT_TRUE(well.array("findings").empty());
    EXPECT_EQ(well.integer("shown"), 5);
}

TEST_F(WorkbenchTest, NodesOfTheFileAreThoseOfTheFrame) {
    begin();
    waitUntilJudged(1);
    const Value outline = get(std::string(kBase) + "/outline", me).json();
    const Value& scene = outline.array("scenes")[0];
    EXPECT_EQ(scene.string("file"), "scene.plist");
    EXPECT_EQ(scene.integer("frames"), test::SmallTemplate::frames);
    const Value& mover = scene.array("nodes")[1];
    EXPECT_EQ(mover.string("key"), "object3D[0].childNode[0]");
    EXPECT_EQ(mover.integer("parent"), 0);
    EXPECT_EQ(mover.array("keys")[0].integer("first"), 1);
    EXPECT_EQ(mover.array("keys")[0].integer("last"), 4);

    const Value values = get(std::string(kBase) + "/frames/4.json", me).json();
    EXPECT_EQ(values.integer("frame"), 4);
    std::map<std::string, Value> byKey;
    for (const Value& node : values.array("scenes")[0].array("nodes")) byKey[node.string("key")] = node;
    EXPECT_NEAR(byKey["object3D[0].childNode[0]"].array("transform")[12].doubleValue(), 906, 0.5);
    for (const Value& node : scene.array("nodes"))
        EXPECT_EQ(byKey[node.string("key")].string("name"), node.string("name")) << node.string("key");
}

TEST_F(WorkbenchTest, TrialsShowWhatPeopleMayGive) {
    begin();
    const Value now =
        waitFor("moments", [](const Value& one) { return !one["moments"].dictionary().empty(); });
    std::set<std::string> pictures;
    for (const Value& trial : now.array("trials")) {
        const Reply reply = get(std::string(kBase) + "/trials/" + trial.stringValue() + ".jpg?frame=3", me);
        EXPECT_EQ(reply.status, 200) << trial.stringValue() << reply.body;
        pictures.insert(reply.body);
    }
    EXPECT_GT(pictures.size(), 9U) << "they differ";
    const std::string empty = get(std::string(kBase) + "/frames/3.jpg?trial=empty", me).body;
    const std::string sample = get(std::string(kBase) + "/frames/3.jpg", me).body;
    EXPECT_NE(empty, sample) << "nothing is left of what it was opened with";
    EXPECT_NE(get(std::string(kBase) + "/frames/3.jpg?trial=panorama", me).body, sample);
    EXPECT_EQ(get(std::string(kBase) + "/frames/3.jpg", me).body, sample);
    EXPECT_EQ(get(std::string(kBase) + "/trials/nonsense.jpg?frame=3", me).status, 422);
    EXPECT_EQ(get(std::string(kBase) + "/trials/empty.jpg?frame=x", me).status, 400);
}

TEST_F(WorkbenchTest, IsForThePersonAtThisMachineAndATemplateAlone) {
    begin();
    const Who program{"", "", SessionStore(studioFolder() / "studio.db").addToken("other", Access::Admin)};
    EXPECT_EQ(get(kBase, program).status, 404);
    EXPECT_EQ(get(kBase).status, 401);
    studio.reset();
    workbench.clear();
    begin();
    EXPECT_EQ(get(kBase, me).status, 404);
    for (const auto& [folder, code] : {std::pair{"nowhere", 2}, {"author", 3}}) {
        const auto ended = test::run({programUnderTest(), "--home", home / "other", "studio", home / folder});
        EXPECT_EQ(ended.exitCode, code) << ended.errors;
        EXPECT_THAT(ended.errors, HasSubstr(folder));
    }
}

}  // namespace
}  // namespace multiscene::studio
