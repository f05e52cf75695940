// Programs from descriptions and from source texts, their cache, and the generated blur.
#include <epoxy/gl.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "GlFixture.h"
#include "opengl2.0/QVObject3DShaderCreater.h"
#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "tests/platform/NoFilesLeft.h"
#include "tests/platform/TemporaryFolder.h"

namespace multiscene {
namespace {

using platform::Value;
using ::testing::HasSubstr;

const std::string vertexText =
    "attribute vec4 position; attribute vec2 inputTextureCoordinate; varying vec2 c;\n"
    "void main() { gl_Position = position; c = inputTextureCoordinate; }\n";
const std::string fragmentText =
    "precision mediump float; varying vec2 c; uniform float aplae; uniform vec4 tint;\n"
    "void main() { gl_FragColor = vec4(c, 0.0, aplae) + tint; }\n";

class ShaderTest : public testing::GlFixture {
  protected:
    std::string write(const std::string& name, const std::string& text) {
        std::ofstream(folder_ / name) << text;
        return (folder_ / name).string();
    }
    std::string describe(const std::string& name, const Value::Array& files) {
        return write(name + ".plist", platform::propertyListXml(settings(files)));
    }
    static Value settings(const Value::Array& files) {
        return Value(Value::Dictionary{{"Files", files},
                                       {"Attributes", Value::Array{"position", "inputTextureCoordinate"}},
                                       {"Uniforms", Value::Array{"aplae", "absent"}}});
    }
    std::shared_ptr<Shader> fromTexts(const std::string& key) {
        return manager_.createShaderWithVertex(vertexText, fragmentText,
                                               {"position", "inputTextureCoordinate"}, {"aplae"}, key);
    }
    static unsigned int currentProgram() {
        GLint program = 0;
        glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        return unsigned(program);
    }

    const platform::test::TemporaryFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
    platform::FileGate gate_;
    ShaderManager manager_{gate_};
};

TEST_F(ShaderTest, WritesOnlyUniformsThatAreListedAndThere) {
    const auto shader = fromTexts("a");
    manager_.useShaderObject(shader.get());
    shader->setUniform("aplae", 0.5f);
    shader->setUniform("tint", glm::vec4(1));  // would land in location 0
    float value[4] = {};
    glGetUniformfv(shader->programHandle(), shader->uniformLocation("aplae"), value);
    EXPECT_EQ(value[0], 0.5f);
    shader->setUniformStructOrArray("tint", glm::vec4(0, 0, 0, 0.25f));
    glGetUniformfv(shader->programHandle(), shader->uniformLocationStructOrArray("tint"), value);
    EXPECT_EQ(value[3], 0.25f);
    EXPECT_EQ(glGetError(), unsigned(GL_NO_ERROR));
}

TEST_F(ShaderTest, FailuresAreCachedAndToldOnce) {
    write("good.vsh", vertexText);
    write("broken.fsh", "precision mediump float;\nvoid main() {\n  gl_FragColor = nonsense;\n}\n");
    write("text.txt", "not a stage");
    write("latin.fsh", "// \xE9\n" + fragmentText);
    gate_.allowFolder(folder_);
    for (const char* source : {"broken.fsh", "text.txt", "latin.fsh", "missing.fsh", "../outside.fsh"}) {
        ShaderManager manager(gate_);
        const std::string file = describe(source, {"good.vsh", source});
        const auto shader = manager.createShader(source, file);
        EXPECT_EQ(shader->programHandle(), 0u) << source;
        EXPECT_EQ(manager.createShader(source, file), shader) << "cached although broken";
        ASSERT_EQ(manager.failures().size(), 1u) << source;
        EXPECT_EQ(manager.failures()[0].shader, source);
        EXPECT_THAT(manager.failures()[0].file, HasSubstr(source));
    }
    manager_.createShader("again", describe("again", {"good.vsh", "broken.fsh"}));
    EXPECT_THAT(manager_.failures().at(0).message, HasSubstr("3")) << "the line";
    EXPECT_THAT(manager_.failures().at(0).message, HasSubstr("nonsense"));
}

TEST_F(ShaderTest, ShadersOfTheProgramAreNeverSkipped) {
    const std::string own = describe("own", {"good.vsh", "good.fsh"});
    write("good.vsh", vertexText);
    gate_.allowFolder(folder_);
    platform::resourcesFolder();
    {
        const platform::test::NoFilesLeft none;
        EXPECT_THROW(manager_.createShader("normal_Shader", "normal_Shader.plist"), platform::Error);
        EXPECT_THROW(manager_.createShader("own", own), platform::Error) << "the template's own was skipped";
    }
    EXPECT_THROW(manager_.createShader("nothing_Shader", "nothing_Shader.plist"), platform::Error);
    EXPECT_TRUE(manager_.failures().empty());
    EXPECT_EQ(manager_.createShader("own", own)->programHandle(), 0u) << "a missing source";
    EXPECT_EQ(manager_.failures().size(), 1u);
}

TEST_F(ShaderTest, ADescriptionThatCannotBeReadGivesABrokenShader) {
    EXPECT_EQ(manager_.createShader("none", (folder_ / "none.plist").string())->programHandle(), 0u);
    const std::string fenced = describe("fenced", {});
    EXPECT_EQ(manager_.createShader("fenced", fenced)->programHandle(), 0u);
    ASSERT_EQ(manager_.failures().size(), 2u);
    EXPECT_EQ(manager_.failures()[1].file, fenced);
    EXPECT_THAT(manager_.failures()[1].message, HasSubstr("outside"));
    EXPECT_EQ(gate_.refusals().size(), 1u);
}

TEST_F(ShaderTest, AProgramIsDeletedInItsOwnContextOnly) {
    auto shader = fromTexts("a");
    const unsigned int program = shader->programHandle();
    GLuint attached[2] = {};
    glGetAttachedShaders(program, 2, nullptr, attached);
    manager_.removeAllShaders();
    const auto other = platform::GLContext::create(platform::GLContext::Driver::Software);
    other->makeCurrent();
    const auto bystander = fromTexts("b");
    ASSERT_EQ(bystander->programHandle(), program) << "contexts number their programs alike";
    shader.reset();
    EXPECT_TRUE(other->isCurrent());
    EXPECT_TRUE(glIsProgram(program));
    context_->makeCurrent();
    EXPECT_FALSE(glIsProgram(program));
    for (const GLuint source : attached) EXPECT_FALSE(glIsShader(source)) << "goes with its program";
    manager_.removeAllShaders();
}

TEST_F(ShaderTest, EveryOwnDescriptionBuildsAndListsOnlyWhatIsThere) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(platform::resourcesFolder() / "shaders")) {
        if (entry.path().extension() != ".plist") continue;
        const auto shader = manager_.createShader(entry.path().stem(), entry.path().filename());
        EXPECT_NE(shader->programHandle(), 0u) << entry.path();
        for (const auto& [name, location] : shader->uniformHandles())
            EXPECT_GE(location, 0) << entry.path() << " " << name;
        for (const auto& [name, location] : shader->attributeHandles())
            EXPECT_EQ(glGetAttribLocation(shader->programHandle(), name.c_str()), int(location)) << name;
        ++count;
    }
    EXPECT_GE(count, 8);
    for (const ShaderFailure& failure : manager_.failures()) ADD_FAILURE() << failure.file << failure.message;
}

TEST_F(ShaderTest, WritesTheBlurOfRadiusEight) {
    const auto vertex = QVObject3DShaderCreater::vertexShaderForOptimizedBlurOfRadius(8, 16.0);
    const auto fragment = QVObject3DShaderCreater::fragmentShaderForOptimizedBlurOfRadius(8, 16.0);
    ASSERT_TRUE(vertex && fragment);
    EXPECT_THAT(*vertex, HasSubstr("varying vec2 blurCoordinates[9];"));
    for (const char* offset : {"1.498535", "3.496582", "5.494629", "7.492676"})
        EXPECT_THAT(*vertex, HasSubstr(std::string(" - singleStepOffset * ") + offset + ";\n"));
    EXPECT_THAT(*fragment, HasSubstr("blurCoordinates[0]) * 0.061593;\n"));
    EXPECT_THAT(*fragment, HasSubstr("blurCoordinates[1]) * 0.122587;\n"));
    EXPECT_THAT(*fragment, HasSubstr("blurCoordinates[4]) * 0.120219;\n"));
    EXPECT_THAT(*fragment, HasSubstr("blurCoordinates[6]) * 0.116070;\n"));
    EXPECT_THAT(*fragment, HasSubstr("blurCoordinates[8]) * 0.110328;\n"));
    EXPECT_EQ(fragment->find("highp vec2 singleStepOffset"), std::string::npos);
}

TEST_F(ShaderTest, BlursOfEveryRadiusBuild) {
    EXPECT_FALSE(QVObject3DShaderCreater::vertexShaderForOptimizedBlurOfRadius(0, 16.0));
    EXPECT_FALSE(QVObject3DShaderCreater::fragmentShaderForOptimizedBlurOfRadius(0, 16.0));
    for (const unsigned int radius : {1u, 2u, 7u, 8u, 14u, 15u, 24u}) {
        const auto vertex = QVObject3DShaderCreater::vertexShaderForOptimizedBlurOfRadius(radius, 4.0);
        const auto fragment = QVObject3DShaderCreater::fragmentShaderForOptimizedBlurOfRadius(radius, 4.0);
        const Shader blur(*vertex, *fragment, {"position", "inputTextureCoordinate"},
                          {"u_mvpMatrix", "u_textureMatrix", "videoFrame"});
        EXPECT_NE(blur.programHandle(), 0u) << radius << " " << blur.failures()[0].message;
        EXPECT_EQ(fragment->find("highp vec2 singleStepOffset") != std::string::npos, radius > 14) << radius;
    }
}

}  // namespace
}  // namespace multiscene
