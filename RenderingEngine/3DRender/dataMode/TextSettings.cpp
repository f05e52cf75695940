#include "dataMode/TextSettings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace multiscene {

static constexpr Key textKeyList[] = {
    {.name = "fontName",
     .type = KeyType::Text,
     .fallback = "Sans",
     .meaning =
         "an installed family with its style, a PostScript name, or the path of a font file with a macro"},
    {.name = "textColor", .type = KeyType::Color, .fallback = "0,0,0,1", .meaning = "colour of the letters"},
    {.name = "textMaxLenght",
     .type = KeyType::Integer,
     .unit = "characters",
     .fallback = "0",
     .meaning = "the text is cut after so many; 0: not cut",
     .minimum = 0,
     .maximum = platform::TextLimits::characters},
    {.name = "letterSpacing",
     .type = KeyType::Number,
     .unit = "letter heights",
     .fallback = "0",
     .meaning =
         "more room between letters, in shares of \"fontSize\"; less than 0 brings them closer. Scripts "
         "that join their letters keep them joined",
     .minimum = platform::TextLimits::leastLetterSpacing,
     .maximum = platform::TextLimits::letterSpacing},
    {.name = "lineSpacing",
     .type = KeyType::Number,
     .unit = "line heights",
     .fallback = "1",
     .meaning = "from line to line, in shares of what the font wants",
     .minimum = 0,
     .maximum = platform::TextLimits::lineSpacing},
};
const KeyTable textKeys{"Text", "What every text reads.", nullptr, textKeyList};

namespace {

bool namesFile(const std::string& fontName) {
    return !fontName.empty() && (fontName.front() == '$' || fontName.front() == '/');
}

}  // namespace

float readInRange(const KeyReader& reader, const KeyTable& table, std::string_view key) {
    const Key& range = *table.find(key);
    const float number = reader.number(key);
    if (!std::isfinite(number)) return platform::Value(range.fallback).floatValue();
    return static_cast<float>(std::clamp<double>(number, range.minimum, range.maximum));
}

void readSpacing(const KeyReader& reader, float& letterSpacing, float& lineSpacing) {
    letterSpacing = readInRange(reader, textKeys, "letterSpacing");
    lineSpacing = readInRange(reader, textKeys, "lineSpacing");
}

platform::Color readTextColor(const KeyReader& reader, std::string_view key) {
    const std::string text = reader.text(key);
    const glm::vec4 numbers = reader.vector4(key);
    const bool hasAlpha = std::ranges::count(text, ',') >= 3;
    return {numbers.x, numbers.y, numbers.z, hasAlpha ? numbers.w : 1.0f};
}

std::string findText(const std::string& key, const std::string& sceneIdentifier, int maxLength,
                     const std::string& sceneFolder, Playback& playback) {
    using platform::TextLimits, platform::truncateText;
    const std::string text =
        truncateText(playback.settings().valueOrUsers(key, sceneIdentifier).stringValue(), maxLength);
    std::string drawn = truncateText(text, TextLimits::characters);
    constexpr int named = 40;  // characters: a key may be the text itself
    if (drawn.size() < text.size())
        playback.report().add({.what = "has more than the " + std::to_string(TextLimits::characters) +
                                       " characters of " + std::to_string(TextLimits::codePoints) +
                                       " code points that are drawn; the rest is left out",
                               .name = truncateText(key, named),
                               .scene = sceneFolder,
                               .node = {},
                               .isLeftOut = false});
    return drawn;
}

float findTextScale(const std::string& key, const std::string& sceneIdentifier,
                    const QVMultiSceneRenderShareSettings& settings) {
    const float number = settings.computeUserMap(kUserTextScale + key, sceneIdentifier).floatValue();
    return number > 0 && number < 1 ? number : 1;
}

platform::TextFont findFont(const std::string& name, float size, const std::string& sceneFolder,
                            Playback& playback) {
    const auto report = [&](const char* what) {
        playback.report().add(
            {.what = what, .name = name, .scene = sceneFolder, .node = {}, .isLeftOut = false});
    };
    if (!namesFile(name)) {
        if (!platform::isFontInstalled(name)) report("is not installed; another font is used");
        return {name, nullptr, size};
    }
    const std::string path = playback.settings().multiSceneRenderPathResourcesWithString(name, sceneFolder);
    platform::FileHandle file = path.empty() ? platform::FileHandle() : playback.gate().open(path).file;
    if (!file) {
        report("is a missing font file; another font is used");
        return {"", nullptr, size};
    }
    const platform::FontFile* const font = platform::openFontFile(std::move(file));
    if (!font) report("is no font file, or one too many; another font is used");
    return {"", font, size};
}

std::string letterNames(const std::vector<char32_t>& letters) {
    constexpr size_t most = 8;
    std::string names;
    for (size_t i = 0; i < std::min(letters.size(), most); ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "U+%04X", static_cast<unsigned>(letters[i]));
        names += (i > 0 ? " " : "") + std::string(name);
    }
    if (letters.size() > most) names += " and " + std::to_string(letters.size() - most) + " more";
    return names;
}

}  // namespace multiscene
