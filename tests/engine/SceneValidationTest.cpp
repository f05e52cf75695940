#include "sceneFile/SceneValidation.h"

#include "tests/engine/PlayFixture.h"

namespace multiscene {
namespace {

using testing::Dictionary;
using testing::Value;

class Validation : public testing::PlayFixture {
  protected:
    static std::vector<std::string> keysOf(const SceneValidation::Problems& problems) {
        std::vector<std::string> keys;
        for (const auto& problem : problems) keys.push_back(problem.key());
        return keys;
    }
    SceneValidation::Problems groupProblems() {
        return SceneValidation::sceneGroupProblems(group(), "group.plist");
    }
};

using Keys = std::vector<std::string>;

TEST_F(Validation, NamesTheKeyOfEveryUnknownType) {
    const auto node = [](const char* type, Dictionary more = {}) {
        more["type"] = type;
        return Value(std::move(more));
    };
    const Value component(Dictionary{{"type", "QVBell"}});
    const Value nodes(Value::Array{
        node("TestPatch"), Value(Dictionary{}),
        node("QVObject3DTransformBase",
             {{"childNode", Value(Value::Array{node("QVGhost"), Value(Dictionary{}), "QVQuad"})},
              {"ComponentsInfo", Value(Value::Array{component})},
              {"CameraInfo", Value(Dictionary{{"childNode", Value::Array{node("QVGhost")}}})}})});
    const auto keys = keysOf(SceneValidation::sceneProblems(
        Value(Dictionary{{"TimeSource", node("QVSundial")}, {"object3D", nodes}}), "scene.plist"));
    EXPECT_EQ(keys, (Keys{"TimeSource.type", "object3D[2].ComponentsInfo[0].type",
                          "object3D[2].childNode[0].type", "object3D[2].childNode[1]",
                          "object3D[2].childNode[2]", "object3D[2].CameraInfo.childNode[0].type"}));
    EXPECT_EQ(keysOf(SceneValidation::sceneProblems(Value(Dictionary{}), "scene.plist")), Keys{"TimeSource"});
}

TEST_F(Validation, JudgesAGroupWithItsTransitionsAndEachFileOnce) {
    EXPECT_EQ(keysOf(groupProblems()), Keys{"scene"});
    addScene(1, 3);
    addScene(2, Value(Dictionary{}));
    addScene(3, 3);
    std::filesystem::remove(folder_ / "scene3.plist");
    play(1, testing::transition(7, 2, 0));
    play(2, testing::transition(8, 2, 2));  // of a type that builds none
    play(1, testing::transition(0, 2, 0));  // to no scene
    play(2);
    play(3);
    play(4);
    const auto problems = groupProblems();
    EXPECT_EQ(keysOf(problems), (Keys{"scene[0].sceneTansitionsInfo.tansitionsSceneId", "TimeSource", "",
                                      "scene[5].mainSceneId"}));
    EXPECT_EQ(problems[1].file(), (folder_ / "scene2.plist").string());
    EXPECT_EQ(problems[2].file(), (folder_ / "scene3.plist").string());
    for (const auto& problem : problems) EXPECT_EQ(problem.kind(), platform::ErrorKind::Template);
    EXPECT_THROW(SceneValidation::requirePlayable(SceneGroup(), "group.plist"), platform::Error);
}

}  // namespace
}  // namespace multiscene
