#pragma once

#include <array>

#include "core/GLESUtils/FrameEdges.h"
#include "core/Material/QVMaterialBase.h"

namespace multiscene {

/// Size of a picture in pixels.
struct TextureSize {
    double width = 0, height = 0;
};

/// A material with a GL texture.
class QVTextureMaterial : public QVMaterialBase {
  public:
    using TextureCoordinates = std::array<float, 8>;  ///< u, v of the corners, in the order of a quad

    /// Pictures: their first row is the upper edge.
    static constexpr TextureCoordinates topDownTextureCoordinates{0, 1, 1, 1, 1, 0, 0, 0};
    /// Render targets: GL's rows start at the lower edge.
    static constexpr TextureCoordinates bottomUpTextureCoordinates{0, 0, 1, 0, 1, 1, 0, 1};

    /// 0: nothing to draw.
    uint32_t textureId() const { return textureId_; }
    const TextureCoordinates& textureCoordinates() const { return textureCoordinates_; }
    /// The picture behind the texture; 0 x 0 when unknown.
    virtual TextureSize textureSize() const { return {}; }
    /// Colours are multiplied by alpha, as those of decoded pictures, texts and render targets are.
    bool isPreMultiplication() const { return isPreMultiplication_; }
    /// Whether the texture can be repeated beyond its edges.
    virtual bool mayRepeat() const { return true; }
    /// What is known of the picture's alpha channel.
    virtual PictureAlpha pictureAlpha() const { return {}; }
    /// The file shown, for traces; empty when there is none.
    virtual std::string sourcePath() const { return {}; }

  protected:
    explicit QVTextureMaterial(MaterialType materialType, bool isPreMultiplication,
                               const TextureCoordinates& coordinates = topDownTextureCoordinates)
        : QVMaterialBase(materialType),
          textureCoordinates_(coordinates),
          isPreMultiplication_(isPreMultiplication) {}

    void setIsPreMultiplication(bool premultiplied) { isPreMultiplication_ = premultiplied; }
    void setTextureId(uint32_t texture) { textureId_ = texture; }
    void setTextureCoordinates(const TextureCoordinates& coordinates) { textureCoordinates_ = coordinates; }

  private:
    uint32_t textureId_ = 0;
    TextureCoordinates textureCoordinates_;
    bool isPreMultiplication_;
};

}  // namespace multiscene
