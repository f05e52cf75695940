// A cache of programs by shader name.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "opengl2.0/Shader.h"

namespace multiscene {

/// Builds each program once, keeps it until it is removed and switches programs only when they change. A
/// program that failed is cached too and not tried again. Render thread, with the context current.
class ShaderManager {
  public:
    /// Templates' shaders are opened through the gate, which outlives the cache.
    explicit ShaderManager(platform::FileGate& gate) : gate_(gate) {}
    ShaderManager(const ShaderManager&) = delete;
    ShaderManager& operator=(const ShaderManager&) = delete;

    /// The cached shader of that name, else one built from a description file: an absolute path, or a name
    /// such as "normal_renderShader.plist" in the program's own shaders. Never none.
    std::shared_ptr<Shader> createShader(const std::string& name, const std::string& file);
    /// Always builds; replaces a cached shader of that name.
    std::shared_ptr<Shader> createShader(const std::string& name, const platform::Value& settings,
                                         const std::string& shaderRootPath);
    /// The cached shader of that name and these definitions, else one built from a description file, the
    /// definitions before each of its sources.
    std::shared_ptr<Shader> createShaderWithDefinitions(const std::string& name, const std::string& file,
                                                        const std::string& definitions);
    /// The cached shader of that key, else one built from two source texts.
    std::shared_ptr<Shader> createShaderWithVertex(const std::string& vertexSource,
                                                   const std::string& fragmentSource,
                                                   const std::vector<std::string>& attributes,
                                                   const std::vector<std::string>& uniforms,
                                                   const std::string& key);

    std::shared_ptr<Shader> shaderForName(const std::string& name) const;
    /// Makes the shader current; an unknown name switches to program 0 and returns none.
    std::shared_ptr<Shader> useShader(const std::string& name);
    /// The same for a given shader; none switches to program 0.
    void useShaderObject(Shader* shader);

    std::vector<std::shared_ptr<Shader>> allShaders() const;
    /// The program last passed to glUseProgram; all bits set when that is unknown.
    unsigned int activeProgram() const { return activeProgram_; }

    void removeShader(const std::string& name);
    /// Empties the cache. Calls no GL, except that programs nobody else holds are deleted.
    void removeAllShaders();

    /// Everything that went wrong, each shader and file once, in order. Outlives the cache, so that a job can
    /// name it in its summary.
    const std::vector<ShaderFailure>& failures() const { return failures_; }

  private:
    /// The dictionary of a description file at this path; records why when there is none.
    platform::Value readSettings(const std::string& name, const std::string& path);
    std::shared_ptr<Shader> store(const std::string& name, std::shared_ptr<Shader> shader);
    void record(ShaderFailure failure);

    platform::FileGate& gate_;
    std::map<std::string, std::shared_ptr<Shader>> shaderPrograms_;
    unsigned int activeProgram_ = 0;
    std::vector<ShaderFailure> failures_;
};

}  // namespace multiscene
