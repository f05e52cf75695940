#pragma once

#include "core/Material/QVTextureMaterial.h"
#include "core/Material/ZBTexture.h"

namespace multiscene {

/// A photo with a picture over it or with rounded corners.
class QVFilterImage2dMaterial : public QVTextureMaterial {
  public:
    QVFilterImage2dMaterial(std::string imagePath, std::string rootScenePath, platform::Value filterInfo);

    void expectPicture() override;
    void loadMaterial() override;
    void destroyMaterial() override;
    TextureSize textureSize() const override { return modelTexture_.textureContentSize(); }
    std::string sourcePath() const override { return imagePath_; }

  private:
    PicturesAhead::Make making(Playback& playback) const;

    std::string imagePath_, rootScenePath_;
    platform::Value filterInfo_;
    ZBTexture modelTexture_;
};

}  // namespace multiscene
