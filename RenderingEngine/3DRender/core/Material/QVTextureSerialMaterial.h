#pragma once

#include <optional>

#include "core/Material/PictureSequence.h"
#include "core/Material/QVTextureMaterial.h"
#include "core/Material/ZBTexture.h"

namespace multiscene {

/// A numbered picture sequence. Holds one picture at a time; a picture that is missing leaves the last one.
class QVTextureSerialMaterial : public QVTextureMaterial {
  public:
    /// `startFps`, `endFps`: first and last frame of the owning object.
    QVTextureSerialMaterial(platform::Value textureInfo, int64_t startFps, int64_t endFps,
                            const std::shared_ptr<QVScene3D>& scene);

    void updateMaterial(int64_t frame) override;
    void destroyMaterial() override;
    TextureSize textureSize() const override { return modelTexture_.textureContentSize(); }
    std::string sourcePath() const override { return shownPath_; }

  private:
    void show(const std::string& path, platform::FileGate& gate);

    platform::Value textureInfo_;
    ImageType imageType_;
    PictureSequence sequence_;
    int64_t animationStartFps_, animationEndFps_;
    std::weak_ptr<QVScene3D> currentscene_;
    std::string shownPath_;
    ZBTexture modelTexture_;
};

}  // namespace multiscene
