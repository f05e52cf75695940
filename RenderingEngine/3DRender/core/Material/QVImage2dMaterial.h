#pragma once

#include "core/Material/QVTextureMaterial.h"
#include "core/Material/ZBTexture.h"

namespace multiscene {

/// A still picture.
class QVImage2dMaterial : public QVTextureMaterial {
  public:
    /// `imagePath` may be empty: the material then stays without a texture.
    QVImage2dMaterial(std::string imagePath, ImageType imageType, platform::Value textureInfo = {});

    void expectPicture() override;
    void loadMaterial() override;
    void destroyMaterial() override;
    TextureSize textureSize() const override { return modelTexture_.textureContentSize(); }
    std::string sourcePath() const override { return imagePath_; }

  private:
    PicturesAhead::Make making() const;

    std::string imagePath_;
    ImageType imageType_;
    platform::Value textureInfo_;
    ZBTexture modelTexture_;
};

}  // namespace multiscene
