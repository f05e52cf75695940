#include "platform/base/Limits.h"

#include <fstream>
#include <functional>

#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Limits;
using platform::Value;
using ::testing::AllOf;
using ::testing::HasSubstr;

namespace {

const std::string picture = "$(currentScenePlistROOT)/red.png";

/// Something that a template can have too much of.
struct Limited {
    const char* name;
    uint64_t most;
    std::string file, keyPath;  ///< named when there is one more
    std::function<void(SmallTemplate&, size_t number)> fill;
};

void PrintTo(const Limited& limited, std::ostream* stream) { *stream << limited.name; }

void fillNodes(SmallTemplate& small, size_t number) {
    const Value::Dictionary empty{{"type", "QVObject3DTransformBase"}};
    small.nodes.resize(1);
    small.nodes.resize(number - 2, empty);  // camera and clock are nodes too
}

void fillFiles(SmallTemplate& small, size_t number) {
    small.nodes.assign(number, quad("again", picture));
    small.more = [](const fs::path& folder) { writePicture(folder / "red.png", 0xff0000, 2000, 2000); };
}

void fillScenes(SmallTemplate& small, size_t number) {
    small.description["sceneGroup"] =
        Value::Array(number, Value::Dictionary{{"mainSceneId", SmallTemplate::sId}});
}

void fillRecords(SmallTemplate& small, size_t number) {
    for (int more = 1; more < static_cast<int>(number); ++more)
        small.moreRecords.push_back(
            recordOf(SmallTemplate::sId + more, small.name, "scene.plist", SmallTemplate::frames));
}

void fillShader(SmallTemplate& small, size_t bytes) {
    small.shaderSource = "void main() { gl_FragColor = vec4(1.0); }";
    small.shaderSource.resize(bytes, '\n');
    Value::Dictionary node = quad("shaded", picture);
    node["type"] = "QVQuadCustomShaderOneVariable";
    node["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}};
    small.nodes = {node};
}

void fillPicture(SmallTemplate& small, size_t bytes) {
    small.more = [=](const fs::path& folder) { fs::resize_file(folder / "red.png", bytes); };
}

std::vector<Limited> limits() {
    return {
        {"Nodes", Limits::maxSceneNodes, "scene.plist", "object3D[19998]", fillNodes},
        {"Files", Limits::maxSceneFiles, "scene.plist", "object3D[2000].TextureInfo.texture", fillFiles},
        {"Scenes", Limits::maxGroupScenes, "small.plist", "sceneGroup", fillScenes},
        {"Records", Limits::maxRecords, "small.plist", "installScenes", fillRecords},
        {"Shader", Limits::maxShaderBytes, "own.fsh", "customShaderPath", fillShader},
        {"Picture", Limits::maxPictureBytes, "red.png", "object3D[0].TextureInfo.texture", fillPicture},
    };
}

class PlayLimitsTest : public ProgramTest {
  protected:
    /// What takes much longer than its input is long runs out of time.
    Result inTime(std::vector<std::string> words, int cpuSeconds = 20) const {
        const auto wanted = command(std::move(words));
        std::vector<std::string> all{"prlimit", "--cpu=" + std::to_string(cpuSeconds)};
        all.insert(all.end(), wanted.begin(), wanted.end());
        return run(all);
    }
};

class LimitsTest : public PlayLimitsTest, public ::testing::WithParamInterface<Limited> {
  protected:
    /// The template with so many of what is limited.
    fs::path written(size_t number) const {
        SmallTemplate small;
        GetParam().fill(small, number);
        return small.write(folder.path());
    }
};

}  // namespace

TEST_P(LimitsTest, WhatIsAllowedIsJudgedInTime) {
    const Result result = inTime({"check", written(GetParam().most)});
    EXPECT_EQ(result.exitCode, 0) << result.errors.substr(0, 1000) << result.output.substr(0, 1000);
}

TEST_P(LimitsTest, OneMoreIsRefusedWithFileAndKey) {
    const fs::path path = written(GetParam().most + 1);
    const Result result = inTime({"make", path, "-o", folder.file("out.mp4")});
    EXPECT_EQ(result.exitCode, 3) << result.errors.substr(0, 1000);
    EXPECT_EQ(result.errorLines().size(), 1u) << result.errors.substr(0, 1000);
    EXPECT_THAT(result.errors, AllOf(HasSubstr(GetParam().file), HasSubstr(GetParam().keyPath),
                                     HasSubstr(std::to_string(GetParam().most))));
}

INSTANTIATE_TEST_SUITE_P(All, LimitsTest, ::testing::ValuesIn(limits()),
                         [](const auto& limited) { return std::string(limited.param.name); });

class LimitsAtWorkTest : public LimitsTest {};

/// Force does not help, and no such template is packed.
TEST_P(LimitsAtWorkTest, HoldForEveryCommand) {
    const fs::path path = written(GetParam().most + 1);
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"frames", path, "--at", "0", "--force", "-o", folder.file("out")},
          std::vector<std::string>{"template", "pack", path, "-o", folder.file("out.zip")}}) {
        const Result result = inTime(words);
        EXPECT_EQ(result.exitCode, 3) << words.front();
        EXPECT_THAT(result.output + result.errors, HasSubstr("allowed")) << words.front();
    }
}

INSTANTIATE_TEST_SUITE_P(Scenes, LimitsAtWorkTest, ::testing::Values(limits()[0], limits()[1], limits()[2]),
                         [](const auto& limited) { return std::string(limited.param.name); });

TEST_F(PlayLimitsTest, AsManyNodesAsAreAllowedArePlayed) {
    SmallTemplate small;
    fillNodes(small, Limits::maxSceneNodes);
    const fs::path path = small.write(folder.path());
    const Result result = inTime({"frames", path, "--at", "0,5", "-o", folder.file("out")}, 4);
    EXPECT_EQ(result.exitCode, 0) << result.errors.substr(0, 1000);
}

TEST_F(PlayLimitsTest, APhotoHasAsManyBytesAsAreAllowed) {
    const fs::path path = SmallTemplate().write(folder.path());
    const fs::path photo = folder.path() / "photo.png";
    writePicture(photo, 0x00ff00);
    const auto make = [&](uint64_t bytes) {
        fs::resize_file(photo, bytes);
        return multiscene({"make", path, "-o", folder.file("out.mp4"), "--photo", "photo=" + photo.string()});
    };
    EXPECT_EQ(make(Limits::maxPictureBytes).exitCode, 0);
    const Result result = make(Limits::maxPictureBytes + 1);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr(photo.string()), HasSubstr(": photo: "), HasSubstr("268435456")));
}

}  // namespace multiscene::test
