#pragma once

#include "core/Material/QVTextureMaterial.h"
#include "core/Material/ZBTexture.h"

namespace multiscene {

/// A text drawn into a texture, laid out as its dictionary says.
class QVTexture2dMaterial : public QVTextureMaterial {
  public:
    /// `textString` is kept; what is drawn is the "textString" of the dictionary, looked up in the user media
    /// map.
    QVTexture2dMaterial(std::string textString, platform::Value textInfo);

    void loadMaterial() override;
    void destroyMaterial() override;
    TextureSize textureSize() const override { return modelTexture_.textureContentSize(); }
    const std::string& textString() const { return textString_; }

  private:
    std::string textString_;
    platform::Value textInfo_;
    ZBTexture modelTexture_;
};

}  // namespace multiscene
