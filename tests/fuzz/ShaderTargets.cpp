// Shaders of templates: their text, and the descriptions that name them.
#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/gl/GLContext.h"
#include "platform/gl/ShaderCost.h"
#include "platform/gl/ShaderTokens.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/ShaderMaker.h"

namespace multiscene::fuzz {

namespace {

void useGL() {
    static const auto context = platform::GLContext::create(platform::GLContext::Driver::Software);
    context->makeCurrent();
}

constexpr const char* vertexSource =
    "attribute vec4 position; varying vec2 textureCoordinate;"
    "void main() { gl_Position = position; textureCoordinate = position.xy; }";

}  // namespace

void playShaderText(Bytes bytes) {
    const auto tokens = platform::shaderTokens(textOf(bytes), platform::limitOf("maxShaderWords"));
    require(!tokens.problem.empty() || tokens.words.size() <= platform::limitOf("maxShaderWords"),
            "a text is not expanded beyond the limit");
    platform::shaderTextProblem(textOf(bytes));
}

/// What is let through is compiled: the driver must manage it.
void playShaderGrammar(Bytes bytes) {
    ByteSource source(bytes);
    const std::string text = makeShader(source);
    if (!platform::shaderTextProblem(text).empty()) return;
    useGL();
    Shader(vertexSource, text, {"position"}, {"videoFrame", "aplae"});
}

/// The description of a shader, with the program's own sources.
void playShaderDescription(Bytes bytes) {
    isTaken([&] {
        const platform::Value description = platform::parsePropertyList(bytes, "shader.plist");
        useGL();
        platform::FileGate gate;
        Shader(description, (platform::resourcesFolder() / "shaders").string(), gate);
    });
}

}  // namespace multiscene::fuzz
