#pragma once

#include <array>

#include "core/GLESUtils/Texture.h"
#include "core/Material/QVMaterialBase.h"

namespace multiscene {

/// Size of a picture in pixels.
struct TextureSize {
    double width = 0, height = 0;
};

/// A material with a picture to sample.
class QVTextureMaterial : public QVMaterialBase {
  public:
    using TextureCoordinates = std::array<float, 8>;  ///< u, v of the corners, in the order of a quad

    /// Pictures: their first row is the upper edge.
    static constexpr TextureCoordinates topDownTextureCoordinates{0, 1, 1, 1, 1, 0, 0, 0};
    /// Render targets: GL's rows start at the lower edge.
    static constexpr TextureCoordinates bottomUpTextureCoordinates{0, 0, 1, 0, 1, 1, 0, 1};

    /// None, or an empty one: nothing to draw.
    const std::shared_ptr<Texture>& texture() const { return texture_; }
    bool hasTexture() const { return texture_ && !texture_->isEmpty(); }
    const TextureCoordinates& textureCoordinates() const { return textureCoordinates_; }
    /// The picture behind the texture; 0 x 0 when unknown.
    virtual TextureSize textureSize() const { return {}; }
    /// Whether the texture can be repeated beyond its edges.
    virtual bool mayRepeat() const { return true; }
    /// The file shown, for traces; empty when there is none.
    virtual std::string sourcePath() const { return {}; }

  protected:
    explicit QVTextureMaterial(MaterialType materialType,
                               const TextureCoordinates& coordinates = topDownTextureCoordinates)
        : QVMaterialBase(materialType), textureCoordinates_(coordinates) {}

    void setTexture(std::shared_ptr<Texture> texture) { texture_ = std::move(texture); }
    void setTextureCoordinates(const TextureCoordinates& coordinates) { textureCoordinates_ = coordinates; }

  private:
    std::shared_ptr<Texture> texture_;
    TextureCoordinates textureCoordinates_;
};

}  // namespace multiscene
