// A thin handle on a program that the shader manager keeps: what an object's own shader is.
#pragma once

#include <memory>
#include <string>

namespace multiscene {

class Shader;

/// Looks its program up by key at every call, so it stays right when the cache is emptied. Without a program
/// the locations are 0, as those of names that a description does not list. Render thread.
class QVMultiSceneRenderShader {
  public:
    /// Has the manager load the description file (an absolute path, or a name in the program's own shaders).
    QVMultiSceneRenderShader(std::string shaderKey, const std::string& shaderPath);

    const std::string& shaderKey() const { return shaderKey_; }
    void useShader();

    int rootTextureUniformLocation() const { return uniform("videoFrame"); }
    int mvpMatrixUniformLocation() const { return uniform("u_mvpMatrix"); }
    int textureMatrixUniformLocation() const { return uniform("u_textureMatrix"); }
    unsigned int positionAttributeHandle() const { return attribute("position"); }
    unsigned int textureCoordinateAttributeHandle() const { return attribute("inputTextureCoordinate"); }
    int oneVariableUniformLocation() const { return uniform("aplae"); }

    /// The program behind the key, or none.
    std::shared_ptr<Shader> shader() const;

  private:
    int uniform(const char* name) const;
    unsigned int attribute(const char* name) const;

    std::string shaderKey_;
};

}  // namespace multiscene
