// The settings and the layout of one text texture: which text, in which font, how large the texture is, where
// the lines lie in it. docs/text-layout.md has the rules for authors.
#pragma once

#include <string>
#include <vector>

#include "format/KeyTable.h"
#include "platform/base/Value.h"
#include "platform/text/TextRasterizer.h"

namespace multiscene {

/// The keys of a "TextureInfo" whose "textureType" is "text2d".
extern const KeyTable text2DKeys;

class Playback;

/// Read from the dictionary first, then given its scene, which finds the text and fixes the layout. A plain
/// value: the material that draws it makes and drops it. Render thread.
class QVMultiScene2DTextDataModel {
  public:
    static QVMultiScene2DTextDataModel multiScene2DTextDataModelWithDic(const platform::Value& info);

    /// Looks "textString" up in the user media map (key + identifier; where there is none, "textString" is
    /// the text itself), finds the font, then computes textureSize, textDrawRect and textDrawScale.
    void setScene(const std::string& sceneIdentifier, const std::string& sceneResourceFolderPath,
                  Playback& playback);

    const std::string& textString() const { return description_.layout.text; }
    /// Pixels, at least 1 x 1 once the scene is set. Need not be whole or a power of two.
    platform::TextSize textureSize() const { return description_.textureSize; }
    /// Where the lines go, in texture pixels divided by textDrawScale.
    platform::TextRect textDrawRect() const { return description_.drawRect; }
    /// Below 1 where a text had to shrink to fit.
    double textDrawScale() const { return description_.drawScale; }
    const platform::TextTextureDescription& description() const { return description_; }
    /// What no font has and is left out; known once the scene is set.
    const std::vector<char32_t>& missingLetters() const { return missingLetters_; }

    /// The text in a transparent bitmap; `scale` is bitmap pixels a texture pixel.
    platform::Bitmap drawText(int bitmapWidth, int bitmapHeight, double scale) const {
        return platform::drawText(description_, bitmapWidth, bitmapHeight, scale);
    }

  private:
    /// What decides about the size of a texture.
    enum class TextureSizeMode { Fixed = 0, GrowWithText = 1 };

    void computeLayout();
    platform::TextSize grownSize(platform::TextSize limits, platform::TextSize free);

    platform::TextTextureDescription description_;
    TextureSizeMode textureSizeMode_ = TextureSizeMode::Fixed;
    platform::TextSize textFixedResolution_;
    std::string fontName_;
    int textMaxLenght_ = 0;
    std::vector<char32_t> missingLetters_;
};

}  // namespace multiscene
