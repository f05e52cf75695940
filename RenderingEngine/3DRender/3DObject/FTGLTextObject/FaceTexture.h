#pragma once

#include <glm/glm.hpp>
#include <memory>

#include "core/Material/QVMaterialBase.h"
#include "platform/base/Value.h"

namespace multiscene {

class QVTextureMaterial;
class Texture;

/// The picture on one kind of faces of solid letters. Loaded at its node's first frame, given up at its last.
class FaceTexture {
  public:
    FaceTexture() = default;
    explicit FaceTexture(platform::Value textureInfo) : info_(std::move(textureInfo)) {}

    bool isGiven() const { return static_cast<bool>(info_); }
    const platform::Value& info() const { return info_; }
    void load(const MaterialContext& context);
    void update(int64_t frame);
    void drop();

    /// Null while there is nothing to draw.
    Texture* texture() const;
    /// From places, 0,0 at the upper left, to the texture's coordinates.
    glm::mat4 matrix() const;

  private:
    platform::Value info_;
    std::shared_ptr<QVMaterialBase> material_;
    QVTextureMaterial* pictured_ = nullptr;  ///< material_ again, when it has a texture
};

}  // namespace multiscene
