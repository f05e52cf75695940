#pragma once

#include "core/Material/QVTextureMaterial.h"
#include "core/Material/ZBTexture.h"

namespace multiscene {

/// A text drawn into a texture, laid out as its dictionary says.
class QVTexture2dMaterial : public QVTextureMaterial {
  public:
    /// What is drawn is the "textString" of the dictionary, looked up in the user media map.
    explicit QVTexture2dMaterial(platform::Value textInfo);

    void loadMaterial() override;
    void destroyMaterial() override;
    TextureSize textureSize() const override { return modelTexture_.textureContentSize(); }

  private:
    platform::Value textInfo_;
    ZBTexture modelTexture_;
};

}  // namespace multiscene
