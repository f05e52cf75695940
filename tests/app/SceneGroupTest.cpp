#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "TemporaryHome.h"
#include "group/SceneCatalogue.h"
#include "other/QVMultiSceneGropPlistFileManager.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "other/QVUtil.h"
#include "platform/base/PropertyList.h"

namespace multiscene {
namespace {

using platform::Value;
using Settings = QVMultiSceneRenderShareSettings;

class FixedCatalogue : public SceneCatalogue {
  public:
    std::optional<SceneConfigData> querySceneWithSid(int64_t sId) override {
        const auto found = scenes.find(sId);
        return found == scenes.end() ? std::nullopt : std::optional(found->second);
    }
    void add(int64_t sId, int64_t fpsLength, int64_t sourceType = 1) {
        scenes[sId].fpsLength = fpsLength;
        scenes[sId].sourceType = sourceType;
    }
    std::map<int64_t, SceneConfigData> scenes;
};

class SceneGroupTest : public testing::Test {
  protected:
    void SetUp() override {
        catalogue.add(1, 100);
        catalogue.add(2, 80);
        catalogue.add(3, 60);
    }
    int32_t totalWithTransitions(int64_t type, int64_t onLast = 0) {
        QVMultiSceneGropPlistFileManager group(file(), catalogue);
        group.addSceneWithId(1, "a", 9, 20, type);
        group.addSceneWithId(2, "b", 9, 20, type);
        group.addSceneWithId(3, "c", onLast, 20, type);
        return group.computeTotalFps();
    }
    std::string file() const { return (home.outside() / "sceneGroup.plist").string(); }

    test::TemporaryHome home;
    FixedCatalogue catalogue;
};

TEST_F(SceneGroupTest, TransitionsThatOverlapTwoScenesShortenTheGroup) {
    EXPECT_EQ(totalWithTransitions(0), 200);
    EXPECT_EQ(totalWithTransitions(1), 240);
    EXPECT_EQ(totalWithTransitions(2), 240);
    EXPECT_EQ(totalWithTransitions(0, 9), 200) << "the last scene has nothing to overlap with";
    EXPECT_EQ(QVMultiSceneGropPlistFileManager(file(), catalogue).computeTotalFps(), 0);
}

TEST_F(SceneGroupTest, LengthsComeFromTheUsersVideoOrSaturate) {
    catalogue.add(7, 0, 7);
    catalogue.add(8, 0, 1);
    catalogue.add(9, int64_t(1) << 40);
    QVMultiSceneGropPlistFileManager group(file(), catalogue);
    group.addSceneWithId(7, "video");
    group.addSceneWithId(8, "video");
    group.addSceneWithId(404, "not in the catalogue");
    group.addObjectToUserMap(45, "userVideo_totalFps", "video");
    EXPECT_EQ(group.computeTotalFps(), 45);
    group.addSceneWithId(9, "endless");
    EXPECT_EQ(group.computeTotalFps(), std::numeric_limits<int32_t>::max());
}

TEST_F(SceneGroupTest, WritesEntriesTheWayThePlayerReadsThem) {
    test::writeText(file(), "an earlier file");
    QVMultiSceneGropPlistFileManager group(file(), catalogue);
    group.addSceneWithId(1, "a");
    group.addSceneWithId(2, "b", 5, 10, 1);
    group.addSceneWithId(3, "c", 0, 10, 1);
    group.addObjectToUserMap("Anna", "name", "a");
    group.commit();

    const Value read = platform::readPropertyList(file());
    const Value::Array& scenes = read.array("scene");
    ASSERT_EQ(scenes.size(), 3u);
    EXPECT_EQ(scenes[0], Value(Value::Dictionary{{"mainSceneId", 1}, {"sceneIdentifier", "a"}, {"a", "a"}}));
    const Value transition =
        Value::Dictionary{{"tansitionsSceneId", 5}, {"fpsTotal", 10}, {"sceneTansitionsType", 1}};
    EXPECT_EQ(scenes[1],
              Value(Value::Dictionary{{"mainSceneId", 2}, {"b", "b"}, {"sceneTansitionsInfo", transition}}));
    EXPECT_EQ(scenes[2], Value(Value::Dictionary{{"mainSceneId", 3}, {"c", "c"}}));
    EXPECT_EQ(read["userMediaMap"], Value(Value::Dictionary{{"namea", "Anna"}}));
    EXPECT_EQ(read.integer("sceneGroupFpsTotal"), 240);
}

TEST_F(SceneGroupTest, MacrosOfAPlayingGroup) {
    Settings settings;
    settings.setCurrentSceneGroupPlistPathFloder("/group/");
    settings.setCurrentSceneGroupUserResourcePathFloder("/user/");
    const std::string home3D = home.home().string() + "/qvMultiSceneRender/";
    const std::string bundle = platform::resourcesFolder().string();
    const struct {
        std::string path, sceneFolder, expected;
    } cases[] = {
        {"$(currentScenePlistROOT)/a/b.png", "/scenes/x/", "/scenes/x/a/b.png"},
        {"$(currentScenePlistROOT)/a/b.png", "/scenes/x", "/scenes/xa/b.png"},
        {"$(currentScenePlistROOT)/a/b.png", "", ""},
        {"$(currentScenePlistROOT)/a/$(currentScenePlistROOT)/b.png", "/s/", "/s/a/b.png"},
        {"$(currentSceneGroupPlistROOT)/m.mp3", "/s/", "/group/m.mp3"},
        {"$(currentSceneGroupUserResourcePathROOT)/p.jpg", "/s/", "/user/p.jpg"},
        {"$(mainBundleResourcePathROOT)/shaders/x.plist", "/s/", bundle + "/shaders/x.plist"},
        {"$(mainBundleResourcePathROOT)/shaders/x.plist", "", bundle + "/shaders/x.plist"},
        {"$(multiSceneRootROOT)/x", "/s/", home3D + "x"},
        {"$(multiSceneSceneROOT)/T/T.plist", "", home3D + "scene/T/T.plist"},
        {"$(multiSceneUserResourcesROOT)/x", "", home3D + "UserResources/x"},
        {"$(MultiSceneTemplateROOT)/x", "", home3D + "MultiSceneTemplate/x"},
        {"/absolute/p.jpg", "/s/", "/absolute/p.jpg"},
        {"", "/s/", ""},
        {"picture.png", "/s/", ""},
        {"folder/picture.png", "", ""},
    };
    for (const auto& [path, sceneFolder, expected] : cases)
        EXPECT_EQ(settings.multiSceneRenderPathResourcesWithString(path, sceneFolder), expected) << path;

    settings.setScenePath("/elsewhere");
    EXPECT_EQ(settings.multiSceneRenderPathResourcesWithString("$(multiSceneSceneROOT)/T/a", "/s/"),
              "/elsewhere/T/a");
    EXPECT_EQ(Settings().multiSceneRenderPathResourcesWithString("$(multiSceneSceneROOT)/T/a", "/s/"),
              home3D + "scene/T/a")
        << "others are not moved";
}

TEST_F(SceneGroupTest, FramesAreTheUsersOrTheWrittenOnes) {
    Settings settings;
    settings.setUserMediaMapDic(Value::Dictionary{{"startA", "12"}, {"endA", 90}});
    int64_t start = -1, end = -1;
    const auto read = [&](Value::Dictionary fpsInfo) {
        settings.computeStartAndEndFps(Value(std::move(fpsInfo)), "A", start, end);
        return std::pair(start, end);
    };
    EXPECT_EQ(read({{"startFps", "start"}, {"endFps", "end"}}), std::pair(int64_t(12), int64_t(90)));
    EXPECT_EQ(read({{"startFps", "7"}, {"endFps", 8.9}}), std::pair(int64_t(7), int64_t(8)));
    EXPECT_EQ(read({}), std::pair(int64_t(0), std::numeric_limits<int64_t>::max()));
}

TEST_F(SceneGroupTest, CommaSeparatedNumbers) {
    using testing::ElementsAre;
    const auto read = [](const char* text) {
        std::array<float, 4> numbers{9, 9, 9, 9};
        QVUtil::getpagame(text, numbers.data(), 3);
        return numbers;
    };
    EXPECT_THAT(read("1.5, -2 ,+3e1"), ElementsAre(1.5f, -2.0f, 30.0f, 9.0f));
    EXPECT_THAT(read("1,2,3,4,5"), ElementsAre(1.0f, 2.0f, 3.0f, 9.0f)) << "writes past its array";
    EXPECT_THAT(read("1"), ElementsAre(1.0f, 0.0f, 0.0f, 9.0f));
    EXPECT_THAT(read("x,,2"), ElementsAre(0.0f, 0.0f, 2.0f, 9.0f));
    EXPECT_THAT(read(""), ElementsAre(0.0f, 0.0f, 0.0f, 9.0f));
    // Through double precision this one would round to the neighbouring float.
    EXPECT_EQ(read("1.00000017881393432617187499")[0], 1.00000011920928955078125f);
}

}  // namespace
}  // namespace multiscene
