#pragma once

#include <optional>

#include "core/Material/QVTextureMaterial.h"
#include "videoDecode/QVVideoReader.h"

namespace multiscene {

/// A video, one picture for each frame that its owner is drawn. At its end it holds the last picture.
class QVVideoMaterial : public QVTextureMaterial {
  public:
    /// Opens the file and starts decoding ahead. `videoFps`: the rate in which frame times count.
    QVVideoMaterial(std::string videoPath, int32_t videoFps, platform::Value textureInfo);

    void loadMaterial() override;
    void updateMaterial(const platform::CMTime& time) override;
    void finishMaterial(const platform::CMTime& time) override;
    void destroyMaterial() override;
    TextureSize textureSize() const override;
    PictureAlpha pictureAlpha() const override { return {.clearMargin = {}, .isOpaque = true}; }
    std::string sourcePath() const override { return videoReader_.url(); }
    bool mayRepeat() const override { return false; }
    const std::optional<QVVideoFrameRenderOutput>& frameOutput() const { return frameOutput_; }

  private:
    platform::Value textureInfo_;
    QVVideoReader videoReader_;
    std::optional<QVVideoFrameRenderOutput> frameOutput_;
};

}  // namespace multiscene
