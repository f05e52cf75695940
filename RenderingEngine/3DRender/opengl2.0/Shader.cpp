#include "opengl2.0/Shader.h"

#include <epoxy/gl.h>

#include <filesystem>

#include "opengl2.0/ShaderSource.h"

namespace multiscene {

namespace {

std::vector<std::string> texts(const platform::Value::Array& values) {
    std::vector<std::string> result;
    for (const platform::Value& value : values) result.push_back(value.stringValue());
    return result;
}

using Getter = void (*)(GLuint, GLenum, GLint*);
using LogGetter = void (*)(GLuint, GLsizei, GLsizei*, GLchar*);

std::string infoLog(GLuint object, Getter get, LogGetter getLog) {
    GLint length = 0;
    get(object, GL_INFO_LOG_LENGTH, &length);
    if (length < 1) return {};
    std::string log(static_cast<size_t>(length), '\0');
    GLsizei written = 0;
    getLog(object, length, &written, log.data());
    log.resize(static_cast<size_t>(written));
    while (!log.empty() && (log.back() == '\n' || log.back() == '\0')) log.pop_back();
    return log;
}

/// The stage that a file's extension names; 0 for any other extension.
GLenum stageOf(const std::string& file) {
    const std::string extension = std::filesystem::path(file).extension().string();
    if (extension == ".vsh") return GL_VERTEX_SHADER;
    return extension == ".fsh" ? GL_FRAGMENT_SHADER : 0;
}

/// With its shaders: attached ones would outlive it.
void deleteProgram(GLuint program) {
    GLint count = 0;
    glGetProgramiv(program, GL_ATTACHED_SHADERS, &count);
    std::vector<GLuint> shaders(static_cast<size_t>(count));
    glGetAttachedShaders(program, count, nullptr, shaders.data());
    glDeleteProgram(program);
    for (const GLuint shader : shaders) glDeleteShader(shader);
}

}  // namespace

Shader::Shader(const platform::Value& settings, const std::string& rootPath, platform::FileGate& gate,
               std::string definitions)
    : definitions_(std::move(definitions)) {
    begin();
    std::vector<unsigned int> shaders;
    for (const platform::Value& file : settings.array("Files")) {
        unsigned int shader = 0;
        compileShader(shader, rootPath + "/" + file.stringValue(), gate);
        shaders.push_back(shader);
    }
    finish(shaders, texts(settings.array("Attributes")), texts(settings.array("Uniforms")));
}

Shader::Shader(const std::string& vertexSource, const std::string& fragmentSource,
               const std::vector<std::string>& attributes, const std::vector<std::string>& uniforms) {
    begin();
    std::vector<unsigned int> shaders(2);
    compileShaderWithShader(shaders[0], vertexSource, GL_VERTEX_SHADER);
    compileShaderWithShader(shaders[1], fragmentSource, GL_FRAGMENT_SHADER);
    finish(shaders, attributes, uniforms);
}

Shader::~Shader() {
    const auto context = context_.lock();
    if (programHandle_ == 0 || !context) return;
    const platform::GLContextScope scope(*context);
    if (scope.active()) deleteProgram(programHandle_);
}

void Shader::begin() {
    if (platform::GLContext* context = platform::GLContext::current()) {
        context_ = context->weak_from_this();
        programHandle_ = glCreateProgram();
    }
}

void Shader::finish(const std::vector<unsigned int>& shaders, const std::vector<std::string>& attributes,
                    const std::vector<std::string>& uniforms) {
    if (programHandle_ == 0) return;
    for (const unsigned int shader : shaders) glAttachShader(programHandle_, shader);
    bindAttributes(attributes);
    if (!linkProgram(programHandle_)) return giveUp(shaders);
    lookUpUniforms(uniforms);
}

void Shader::bindAttributes(const std::vector<std::string>& attributes) {
    unsigned int location = 1;
    for (const std::string& name : attributes) {
        glBindAttribLocation(programHandle_, location, name.c_str());
        attributeHandles_[name] = location++;
    }
}

void Shader::lookUpUniforms(const std::vector<std::string>& uniforms) {
    for (const std::string& name : uniforms)
        uniformHandles_[name] = glGetUniformLocation(programHandle_, name.c_str());
}

void Shader::giveUp(const std::vector<unsigned int>& shaders) {
    for (const unsigned int shader : shaders)
        if (shader != 0) glDeleteShader(shader);
    glDeleteProgram(programHandle_);
    programHandle_ = 0;
}

int Shader::uniformLocation(std::string_view name) const {
    const auto found = uniformHandles_.find(name);
    return found == uniformHandles_.end() ? 0 : found->second;
}

int Shader::uniformLocationStructOrArray(const std::string& name) const {
    return programHandle_ == 0 ? -1 : glGetUniformLocation(programHandle_, name.c_str());
}

unsigned int Shader::attributeHandle(std::string_view name) const {
    const auto found = attributeHandles_.find(name);
    return found == attributeHandles_.end() ? 0 : found->second;
}

bool Shader::hasUniform(std::string_view name) const {
    const auto found = uniformHandles_.find(name);
    return found != uniformHandles_.end() && found->second >= 0;
}

std::vector<std::string> Shader::activeUniforms() const {
    std::vector<std::string> names;
    GLint count = 0, longest = 0;
    if (programHandle_ == 0) return names;
    glGetProgramiv(programHandle_, GL_ACTIVE_UNIFORMS, &count);
    glGetProgramiv(programHandle_, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest);
    for (GLint index = 0; index < count; ++index) {
        std::string name(static_cast<size_t>(longest), '\0');
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(programHandle_, static_cast<GLuint>(index), longest, &length, &size, &type,
                           name.data());
        names.emplace_back(name, 0, static_cast<size_t>(length));
    }
    return names;
}

void Shader::setUniform(std::string_view name, const UniformValue& value) {
    if (hasUniform(name)) value.write(uniformLocation(name));
}

void Shader::setUniformStructOrArray(const std::string& name, const UniformValue& value) {
    value.write(uniformLocationStructOrArray(name));
}

bool Shader::compileShader(unsigned int& shader, const std::string& file, platform::FileGate& gate) {
    const GLenum stage = stageOf(file);
    std::string problem = "a shader source ends in .vsh or .fsh";
    const auto text = stage ? readShaderText(file, gate, problem) : std::nullopt;
    if (!text) {
        failures_.push_back({{}, file, problem});
        return false;
    }
    const bool compiled = compileShaderWithShader(shader, definitions_ + *text, stage);
    if (!compiled && !failures_.empty()) failures_.back().file = file;
    return compiled;
}

bool Shader::compileShaderWithShader(unsigned int& shader, const std::string& source, unsigned int type) {
    if (programHandle_ == 0) return false;
    shader = glCreateShader(type);
    const GLchar* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    const std::string log = infoLog(shader, glGetShaderiv, glGetShaderInfoLog);
    GLint compiled = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled) return true;
    failures_.push_back({{}, {}, log.empty() ? "does not compile" : log});
    glDeleteShader(shader);
    return false;
}

bool Shader::linkProgram(unsigned int program) {
    glLinkProgram(program);
    GLint linked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked) return true;
    // A source that failed says more than the link that it makes fail.
    if (failures_.empty()) {
        const std::string log = infoLog(program, glGetProgramiv, glGetProgramInfoLog);
        failures_.push_back({{}, {}, log.empty() ? "does not link" : log});
    }
    return false;
}

}  // namespace multiscene
