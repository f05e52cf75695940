#pragma once

#include <optional>

#include "core/Material/QVTextureMaterial.h"
#include "group/UserFilm.h"
#include "videoDecode/QVVideoReader.h"

namespace multiscene {

/// A video, one picture for each frame that its owner is drawn; of the user's film, the picture of that time.
/// At its end it holds the last picture. Its own sound goes with it, where the scene or the user gives it a
/// volume.
class QVVideoMaterial : public QVTextureMaterial {
  public:
    /// `videoFps`: the rate in which frame times count.
    QVVideoMaterial(std::string videoPath, int32_t videoFps, platform::Value textureInfo, UserFilm userFilm,
                    platform::FileGate& gate);

    /// Opens the file and starts decoding ahead.
    void loadMaterial() override;
    void updateMaterial(int64_t frame) override;
    void destroyMaterial() override;
    TextureSize textureSize() const override;
    std::string sourcePath() const override { return videoPath_; }
    bool mayRepeat() const override { return false; }
    const std::optional<QVVideoFrameRenderOutput>& frameOutput() const { return frameOutput_; }

  private:
    float volume() const;
    void startSound() const;

    std::string videoPath_;
    int32_t videoFps_;
    platform::Value textureInfo_;
    UserFilm userFilm_;
    platform::FileGate& gate_;
    std::optional<QVVideoReader> videoReader_;  ///< from loadMaterial() on
    std::optional<QVVideoFrameRenderOutput> frameOutput_;
};

}  // namespace multiscene
