// What all texts read from their dictionaries in the same way.
#pragma once

#include <string>
#include <vector>

#include "format/KeyTable.h"
#include "platform/text/TextRasterizer.h"
#include "playback/Playback.h"

namespace multiscene {

/// The font's name, the colour, the greatest length and the spacing.
extern const KeyTable textKeys;

/// A number within the range that its key is described with; one that is no number reads as a missing key.
float readInRange(const KeyReader& reader, const KeyTable& table, std::string_view key);

/// "letterSpacing" and "lineSpacing".
void readSpacing(const KeyReader& reader, float& letterSpacing, float& lineSpacing);

/// "red,green,blue" without an alpha is opaque.
platform::Color readTextColor(const KeyReader& reader, std::string_view key);

/// The text behind a "textString": the user's, else the key itself; cut after `maxLength` characters, 0:
/// after those that can be drawn, which the playback's report then tells.
std::string findText(const std::string& key, const std::string& sceneIdentifier, int maxLength,
                     const std::string& sceneFolder, Playback& playback);

/// Followed by the key of a text of the user: its entry in the user media map says how much smaller than its
/// "fontSize" the text is to be where nothing else makes it fit, because it is longer than there is room for.
inline constexpr const char* kUserTextScale = "userText_scale_";

/// That entry, above 0 up to 1; 1 where there is none.
float findTextScale(const std::string& key, const std::string& sceneIdentifier,
                    const QVMultiSceneRenderShareSettings& settings);

/// The font behind a "fontName": an installed one by its name, or a file by its path with a macro, opened
/// through the fence. One that is not there is noted in the render report.
platform::TextFont findFont(const std::string& name, float size, const std::string& sceneFolder,
                            Playback& playback);

/// "U+1F600 U+10FFFF": how the render report names letters that cannot be drawn, the first few of many.
std::string letterNames(const std::vector<char32_t>& letters);

}  // namespace multiscene
