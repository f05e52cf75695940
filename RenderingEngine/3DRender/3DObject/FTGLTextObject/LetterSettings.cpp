#include "3DObject/FTGLTextObject/LetterSettings.h"

#include <algorithm>
#include <cmath>

#include "dataMode/TextFit.h"
#include "dataMode/TextSettings.h"

namespace multiscene {

using platform::LetterText;

static constexpr Key fontInfoKeyList[] = {
    {.name = "textString",
     .type = KeyType::Text,
     .meaning = "the \"renderMapKey\" of a text of the user; where there is none, the text itself",
     .lookup = KeyLookup::UserMap,
     .required = true},
    {.name = "fontSize",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "1",
     .meaning = "height of the letters, from which all their sizes follow",
     .minimum = 0},
    {.name = "smallestFontSize",
     .type = KeyType::Number,
     .unit = "model units",
     .meaning =
         "a text that does not fit \"lineLength\" and \"boxHeight\" gets smaller, down to this; none: it "
         "does not",
     .minimum = 0},
    {.name = "textAlignment",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "of the lines: 0 left, 1 middle, 2 right, 3 justified, 4 by the script",
     .minimum = 0,
     .maximum = 4},
    {.name = "lineLength",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "longer lines are broken; 0: only line feeds break",
     .minimum = 0},
    {.name = "boxHeight",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "room for all lines; 0: as much as they need",
     .minimum = 0},
    {.name = "textHorizontalDrawAlignmentMode",
     .type = KeyType::Integer,
     .fallback = "1",
     .meaning =
         "where the block of lines lies in a box of \"lineLength\" around the origin: 0 left, 1 middle, 2 "
         "right; in a box of length 0 the block begins (0) or ends (2) at the origin",
     .minimum = 0,
     .maximum = 2},
    {.name = "textVerticalDrawAlignmentMode",
     .type = KeyType::Integer,
     .fallback = "1",
     .meaning = "the same in \"boxHeight\": 0 top, 1 middle, 2 bottom",
     .minimum = 0,
     .maximum = 2},
};
const KeyTable fontInfoKeys{"Letters", "What letters that stand in the scene read.", &textKeys,
                            fontInfoKeyList};

namespace {

/// A length beyond which a box has no end.
constexpr float endless = 1e7f;

/// Where a text has a box and may shrink, it shrinks.
void fit(LetterText& text, const glm::vec2& box, float smallest) {
    const float size = text.font.size, unit = size / 96;
    const auto side = [&](float length) { return double(length > 0 ? length / unit : endless); };
    platform::TextLayoutDescription layout{.text = text.text,
                                           .font = text.font,
                                           .alignment = text.alignment,
                                           .letterSpacing = text.letterSpacing,
                                           .lineSpacing = text.lineSpacing};
    layout.font.size = 96;
    const double least = std::clamp<double>(smallest / size, 0.01, 1);
    const TextFit fitted = fitText(layout, {side(box.x), side(box.y)}, {}, {least, least});
    text.font.size = size * float(fitted.scale);
    text.wrap = fitted.wrap;
}

}  // namespace

glm::vec3 LetterSettings::offset(const platform::LetterBlock& block) const {
    const glm::vec2 free = box - glm::vec2(block.width, block.height);
    return {(share.x - 0.5f) * free.x, (0.5f - share.y) * free.y, 0};
}

LetterSettings readLetterSettings(const platform::Value& fontInfo, const std::string& sceneIdentifier,
                                  const std::string& sceneFolder, Playback& playback) {
    const KeyReader reader(fontInfoKeys, fontInfo);
    const auto number = [&](const char* key) { return readInRange(reader, fontInfoKeys, key); };
    const std::string key = reader.text("textString");
    LetterSettings settings;
    LetterText& text = settings.text;
    text.text = findText(key, sceneIdentifier, reader.int32("textMaxLenght"), sceneFolder, playback);
    text.font = findFont(reader.text("fontName"), number("fontSize"), sceneFolder, playback);
    text.alignment = static_cast<platform::TextAlignment>(number("textAlignment"));
    readSpacing(reader, text.letterSpacing, text.lineSpacing);
    settings.box = {number("lineLength"), number("boxHeight")};
    settings.share = {std::floor(number("textHorizontalDrawAlignmentMode")) / 2,
                      std::floor(number("textVerticalDrawAlignmentMode")) / 2};
    if (reader.has("smallestFontSize") && text.font.size > 0)
        fit(text, settings.box, number("smallestFontSize"));
    else
        text.font.size *= findTextScale(key, sceneIdentifier, playback.settings());
    text.lineLength = settings.box.x;
    return settings;
}

}  // namespace multiscene
