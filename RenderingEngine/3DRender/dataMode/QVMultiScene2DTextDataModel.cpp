#include "dataMode/QVMultiScene2DTextDataModel.h"

#include <algorithm>
#include <cmath>

#include "dataMode/TextFit.h"
#include "dataMode/TextSettings.h"
#include "platform/base/Limits.h"

namespace multiscene {

using platform::TextDirection;
using platform::TextDrawingMode;
using platform::TextLimits;
using platform::TextPlacement;
using platform::TextSize;
using platform::Value;

namespace {

/// The longest side of a texture that grows without a limit of its own.
constexpr double largestTexture = platform::limitOf<double>("maxTextTextureSide");

/// An enumeration from its number; numbers that mean nothing are 0.
template <typename Mode>
Mode readMode(const KeyReader& reader, std::string_view key, int last) {
    const int number = reader.int32(key);
    return static_cast<Mode>(number >= 0 && number <= last ? number : 0);
}

/// A length that is no number, or negative, is 0.
float readLength(const KeyReader& reader, std::string_view key, float largest) {
    const float length = reader.number(key);
    return std::isfinite(length) ? std::clamp(length, 0.0f, largest) : 0;
}

TextPlacement readPlacement(const KeyReader& reader, std::string_view key, TextPlacement otherwise) {
    const int number = reader.has(key) ? reader.int32(key) : -1;
    return number >= 0 && number <= 2 ? static_cast<TextPlacement>(number) : otherwise;
}

platform::TextLayoutDescription readLayout(const KeyReader& reader) {
    platform::TextLayoutDescription layout;
    layout.font.size = readLength(reader, "fontSize", TextLimits::fontSize);
    layout.alignment = readMode<platform::TextAlignment>(reader, "textAlignment", 4);
    layout.direction = readMode<TextDirection>(reader, "textLayoutMode", 1);
    readSpacing(reader, layout.letterSpacing, layout.lineSpacing);
    return layout;
}

platform::TextShadow readShadow(const KeyReader& reader) {
    const glm::vec2 offset = reader.vector2("shadowOffset");
    const float blur = readLength(reader, "shadowBlurRadius", TextLimits::blurRadius);
    return {offset.x, offset.y, blur, readTextColor(reader, "shadowColor")};
}

/// Along the lines the alignment alone decides, across them the text stands in the middle.
void readPlacements(const KeyReader& reader, platform::TextTextureDescription& description) {
    const bool vertical = description.layout.direction == TextDirection::Vertical;
    const TextPlacement across = TextPlacement::Middle, along = TextPlacement::Fill;
    description.horizontalPlacement =
        readPlacement(reader, "textHorizontalDrawAlignmentMode", vertical ? across : along);
    description.verticalPlacement =
        readPlacement(reader, "textVerticalDrawAlignmentMode", vertical ? along : across);
}

/// What stroke and shadow need around the lines, so that the texture's edge cuts nothing off.
TextSize margin(const platform::TextTextureDescription& description) {
    const bool stroked = description.drawingMode == TextDrawingMode::Stroke ||
                         description.drawingMode == TextDrawingMode::FillStroke;
    const double stroke = stroked ? double(description.strokeWidth) / 2 : 0;
    if (!description.shadow) return {stroke, stroke};
    const platform::TextShadow& shadow = *description.shadow;
    const double around = stroke + double(shadow.blurRadius);
    return {around + std::abs(shadow.offsetX), around + std::abs(shadow.offsetY)};
}

/// The box inside a texture of the given size, in units of the scaled text.
platform::TextRect insideMargin(TextSize texture, TextSize margin, double scale) {
    return {margin.width, margin.height, std::max(1.0, texture.width / scale - 2 * margin.width),
            std::max(1.0, texture.height / scale - 2 * margin.height)};
}

}  // namespace

QVMultiScene2DTextDataModel QVMultiScene2DTextDataModel::multiScene2DTextDataModelWithDic(const Value& info) {
    const KeyReader reader(text2DKeys, info);
    QVMultiScene2DTextDataModel model;
    auto& description = model.description_;
    description.layout = readLayout(reader);
    description.layout.text = reader.text("textString");
    description.textColor = readTextColor(reader, "textColor");
    description.strokeColor = readTextColor(reader, "strokeColor");
    description.strokeWidth = readLength(reader, "strokeWidth", TextLimits::strokeWidth);
    description.drawingMode = readMode<TextDrawingMode>(reader, "textDrawingMode", 3);
    if (reader.boolean("isShowTextBgColor")) description.background = readTextColor(reader, "textBgColor");
    if (reader.boolean("isShowTextShadow")) description.shadow = readShadow(reader);
    readPlacements(reader, description);
    model.fontName_ = reader.text("fontName");
    model.textMaxLenght_ = reader.int32("textMaxLenght");
    model.textureSizeMode_ = readMode<TextureSizeMode>(reader, "textureSizeMode", 1);
    const glm::vec2 resolution = reader.vector2("textFixedResolution");
    model.textFixedResolution_ = {resolution.x, resolution.y};
    return model;
}

void QVMultiScene2DTextDataModel::setScene(const std::string& sceneIdentifier,
                                           const std::string& sceneResourceFolderPath, Playback& playback) {
    auto& layout = description_.layout;
    layout.text = findText(layout.text, sceneIdentifier, textMaxLenght_, sceneResourceFolderPath, playback);
    layout.font = findFont(fontName_, layout.font.size, sceneResourceFolderPath, playback);
    computeLayout();
}

void QVMultiScene2DTextDataModel::computeLayout() {
    const auto limit = [](double side) { return side > 0 ? std::min(side, largestTexture) : largestTexture; };
    const TextSize limits{limit(textFixedResolution_.width), limit(textFixedResolution_.height)};
    const TextSize free = margin(description_);
    const TextFit fit = fitText(description_.layout, limits, free);
    description_.layout.wrap = fit.wrap;
    description_.drawScale = fit.scale;
    if (!fit.complete)
        description_.horizontalPlacement = description_.verticalPlacement = TextPlacement::Start;
    description_.textureSize = grownSize(limits, free);
    description_.drawRect = insideMargin(description_.textureSize, free, fit.scale);
}

/// The limits themselves, save for the sides that grow with the text.
TextSize QVMultiScene2DTextDataModel::grownSize(TextSize limits, TextSize free) {
    const bool grow = textureSizeMode_ == TextureSizeMode::GrowWithText;
    const bool growWidth = grow || !(textFixedResolution_.width > 0);
    const bool growHeight = grow || !(textFixedResolution_.height > 0);
    const double scale = description_.drawScale;
    const platform::TextRect box = insideMargin(limits, free, scale);
    const bool vertical = description_.layout.direction == TextDirection::Vertical;
    platform::TextMeasure measure = measureText(description_.layout, vertical ? box.height : box.width);
    missingLetters_ = std::move(measure.missingLetters);
    const TextSize text = measure.size;
    // Half a pixel of slack: the lines must break again where they broke when they were measured.
    const auto whole = [&](double side, double space) { return std::ceil((side + 2 * space) * scale + 0.5); };
    return {growWidth ? std::min(limits.width, whole(text.width, free.width)) : limits.width,
            growHeight ? std::min(limits.height, whole(text.height, free.height)) : limits.height};
}

}  // namespace multiscene
