// Texts: their model, their lines, and their letters as pixels and as solids.
#include <algorithm>

#include "dataMode/QVMultiScene2DTextDataModel.h"
#include "platform/base/PropertyList.h"
#include "platform/font/Letters.h"
#include "playback/Playback.h"
#include "tests/fuzz/ByteSource.h"
#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

namespace {

constexpr int mostPixels = 64;  // of a side; larger ones only take longer

int sideOf(double length) { return static_cast<int>(std::clamp(length, 1.0, double(mostPixels))); }

}  // namespace

/// A "TextureInfo" of a text.
void playTextModel(Bytes bytes) {
    isTaken([&] {
        auto model = QVMultiScene2DTextDataModel::multiScene2DTextDataModelWithDic(
            platform::parsePropertyList(bytes, "text.plist"));
        Playback playback;
        model.setScene("a", "/nowhere/", playback);
        const platform::TextSize size = model.textureSize();
        require(size.width >= 1 && size.height >= 1, "a texture has a size");
        require(size.width <= 16384 && size.height <= 16384, "a texture is not endless");
        const int width = sideOf(size.width), height = sideOf(size.height);
        model.drawText(width, height, width / size.width);
    });
}

/// A few choices, then the text.
void playText(Bytes bytes) {
    ByteSource source(bytes);
    platform::TextTextureDescription text;
    platform::TextLayoutDescription& layout = text.layout;
    layout.alignment = static_cast<platform::TextAlignment>(source.below(5));
    layout.direction = static_cast<platform::TextDirection>(source.below(2));
    layout.wrap = static_cast<platform::TextWrap>(source.below(3));
    layout.maxLines = static_cast<int>(source.below(4));
    layout.font.size = static_cast<float>(source.below(40));
    text.drawingMode = static_cast<platform::TextDrawingMode>(source.below(4));
    text.strokeWidth = static_cast<float>(source.below(8));
    if (source.below(2)) text.shadow = platform::TextShadow{1, 1, static_cast<float>(source.below(8)), {}};
    const double wrapLength = static_cast<double>(source.below(100));
    const bool isSolid = source.below(2);
    layout.text = std::string(textOf(source.rest()));

    const int characters = platform::countCharacters(layout.text);
    require(platform::countCharacters(platform::truncateText(layout.text, 3)) <= std::max(3, 0) &&
                characters >= 0,
            "a text is cut where it is told to");
    platform::measureText(layout, wrapLength);
    text.textureSize = {48, 48};
    text.drawRect = {4, 4, 40, 40};
    platform::drawText(text, 48, 48, 1);
    platform::LetterText letters{layout.text, layout.font, layout.alignment, static_cast<float>(wrapLength)};
    if (isSolid)
        platform::solidLetters(letters, {.depth = 4});
    else
        platform::flatLetters(letters);
}

}  // namespace multiscene::fuzz
