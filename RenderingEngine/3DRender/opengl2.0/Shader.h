// One linked GL program with its attribute and uniform locations.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "opengl2.0/ShaderFailure.h"
#include "opengl2.0/UniformValue.h"
#include "platform/base/FileGate.h"
#include "platform/base/Value.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

/// Built from a description (a dictionary with "Files", "Attributes" and "Uniforms") or from two source
/// texts. Building never fails loudly: a program that could not be built has programHandle() 0 and draws
/// nothing; failures() says why. Render thread, with the context current; the program is deleted in the
/// context that it was built in, and not at all when that is gone.
class Shader {
  public:
    using AttributeHandles = std::map<std::string, unsigned int, std::less<>>;
    using UniformHandles = std::map<std::string, int, std::less<>>;

    /// "Files" are names below `rootPath`: "vsh" is a vertex shader, "fsh" a fragment shader. Files outside
    /// the program's resources are opened through the fence. `definitions` are put before every source.
    Shader(const platform::Value& settings, const std::string& rootPath, platform::FileGate& gate,
           std::string definitions = {});
    Shader(const std::string& vertexSource, const std::string& fragmentSource,
           const std::vector<std::string>& attributes, const std::vector<std::string>& uniforms);
    ~Shader();
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;

    unsigned int programHandle() const { return programHandle_; }
    const AttributeHandles& attributeHandles() const { return attributeHandles_; }
    const UniformHandles& uniformHandles() const { return uniformHandles_; }

    /// The cached location, -1 when the linked program has no such uniform, 0 for a name that the description
    /// does not list.
    int uniformLocation(std::string_view name) const;
    /// Asks GL every time: for members of arrays and structures, which descriptions do not list.
    int uniformLocationStructOrArray(const std::string& name) const;
    /// The bound location, from 1; 0 for a name that the description does not list.
    unsigned int attributeHandle(std::string_view name) const;

    /// The description lists the uniform and the linked program has it.
    bool hasUniform(std::string_view name) const;
    /// What the linked program has, listed or not; elements of arrays and members of structures by their
    /// whole names.
    std::vector<std::string> activeUniforms() const;
    /// Sets a listed uniform of this program, which must be the current one; skips one that is not there.
    void setUniform(std::string_view name, const UniformValue& value);
    /// The same for a member of an array or structure, or any other name that is not listed.
    void setUniformStructOrArray(const std::string& name, const UniformValue& value);

    /// What went wrong while this program was built, in order. ShaderFailure::shader is empty here.
    const std::vector<ShaderFailure>& failures() const { return failures_; }

    bool compileShader(unsigned int& shader, const std::string& file, platform::FileGate& gate);
    bool compileShaderWithShader(unsigned int& shader, const std::string& source, unsigned int type);
    bool linkProgram(unsigned int program);

  private:
    void begin();
    void finish(const std::vector<unsigned int>& shaders, const std::vector<std::string>& attributes,
                const std::vector<std::string>& uniforms);
    void bindAttributes(const std::vector<std::string>& attributes);
    void lookUpUniforms(const std::vector<std::string>& uniforms);
    void giveUp(const std::vector<unsigned int>& shaders);

    unsigned int programHandle_ = 0;
    std::string definitions_;
    AttributeHandles attributeHandles_;
    UniformHandles uniformHandles_;
    std::weak_ptr<platform::GLContext> context_;
    std::vector<ShaderFailure> failures_;
};

}  // namespace multiscene
