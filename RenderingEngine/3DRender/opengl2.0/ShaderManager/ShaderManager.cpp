#include "opengl2.0/ShaderManager/ShaderManager.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <filesystem>
#include <limits>

#include "opengl2.0/ShaderSource.h"

namespace multiscene {

namespace {

constexpr unsigned int unknownProgram = std::numeric_limits<unsigned int>::max();

}  // namespace

std::shared_ptr<Shader> ShaderManager::createShader(const std::string& name, const std::string& file) {
    if (auto cached = shaderForName(name)) return cached;
    const std::string path = shaderDescriptionPath(file);
    return createShader(name, readSettings(name, path), std::filesystem::path(path).parent_path().string());
}

platform::Value ShaderManager::readSettings(const std::string& name, const std::string& path) {
    std::string problem;
    platform::Value settings = readShaderDescription(path, gate_, problem);
    if (!problem.empty()) record({name, path, problem});
    return settings;
}

std::shared_ptr<Shader> ShaderManager::createShader(const std::string& name, const platform::Value& settings,
                                                    const std::string& shaderRootPath) {
    auto shader = std::make_shared<Shader>(settings, shaderRootPath, gate_);
    if (shaderForName(name)) removeShader(name);
    return store(name, std::move(shader));
}

std::shared_ptr<Shader> ShaderManager::createShaderWithDefinitions(const std::string& name,
                                                                   const std::string& file,
                                                                   const std::string& definitions) {
    const std::string key = name + "\n" + definitions;
    if (auto cached = shaderForName(key)) return cached;
    const std::filesystem::path path = shaderDescriptionPath(file);
    auto shader = std::make_shared<Shader>(readSettings(name, path.string()), path.parent_path().string(),
                                           gate_, definitions);
    return store(key, std::move(shader));
}

std::shared_ptr<Shader> ShaderManager::createShaderWithVertex(const std::string& vertexSource,
                                                              const std::string& fragmentSource,
                                                              const std::vector<std::string>& attributes,
                                                              const std::vector<std::string>& uniforms,
                                                              const std::string& key) {
    if (auto cached = shaderForName(key)) return cached;
    return store(key, std::make_shared<Shader>(vertexSource, fragmentSource, attributes, uniforms));
}

std::shared_ptr<Shader> ShaderManager::store(const std::string& name, std::shared_ptr<Shader> shader) {
    for (ShaderFailure failure : shader->failures()) {
        failure.shader = name;
        record(std::move(failure));
    }
    return shaderPrograms_[name] = std::move(shader);
}

void ShaderManager::record(ShaderFailure failure) {
    const bool known = std::any_of(failures_.begin(), failures_.end(), [&](const ShaderFailure& other) {
        return other.shader == failure.shader && other.file == failure.file;
    });
    const bool explained = failure.file.empty() &&
                           std::any_of(failures_.begin(), failures_.end(), [&](const ShaderFailure& other) {
                               return other.shader == failure.shader;
                           });
    if (!known && !explained) failures_.push_back(std::move(failure));
}

std::shared_ptr<Shader> ShaderManager::shaderForName(const std::string& name) const {
    const auto found = shaderPrograms_.find(name);
    return found == shaderPrograms_.end() ? nullptr : found->second;
}

std::shared_ptr<Shader> ShaderManager::useShader(const std::string& name) {
    auto shader = shaderForName(name);
    useShaderObject(shader.get());
    return shader;
}

void ShaderManager::useShaderObject(Shader* shader) {
    const unsigned int program = shader ? shader->programHandle() : 0;
    if (program == activeProgram_) return;
    glUseProgram(program);
    activeProgram_ = program;
}

std::vector<std::shared_ptr<Shader>> ShaderManager::allShaders() const {
    std::vector<std::shared_ptr<Shader>> shaders;
    for (const auto& [name, shader] : shaderPrograms_) shaders.push_back(shader);
    return shaders;
}

void ShaderManager::removeShader(const std::string& name) {
    const auto found = shaderPrograms_.find(name);
    if (found == shaderPrograms_.end()) return;
    if (found->second->programHandle() == activeProgram_) {
        glUseProgram(0);
        activeProgram_ = unknownProgram;
    }
    shaderPrograms_.erase(found);
}

void ShaderManager::removeAllShaders() {
    activeProgram_ = unknownProgram;
    shaderPrograms_.clear();
}

}  // namespace multiscene
