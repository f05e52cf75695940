#pragma once

#include <memory>

#include "core/Material/QVTextureMaterial.h"
#include "opengl2.0/Shader.h"

namespace multiscene {

/// Prepares the one-pass blur for one draw: its shader is in use with the steps for a picture of that size,
/// and, for a picture with colours multiplied by alpha, the blend function fits until the end of the scope.
/// The blur runs along the diagonal.
class BackgroundBlur {
  public:
    BackgroundBlur(const TextureSize& pictureSize, bool isPremultiplied);
    ~BackgroundBlur();
    BackgroundBlur(const BackgroundBlur&) = delete;
    BackgroundBlur& operator=(const BackgroundBlur&) = delete;

    Shader& shader() const { return *shader_; }

  private:
    std::shared_ptr<Shader> shader_;
    bool blendsPremultiplied_;
};

}  // namespace multiscene
