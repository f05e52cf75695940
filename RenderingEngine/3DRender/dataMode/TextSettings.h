// What all texts read from their dictionaries in the same way.
#pragma once

#include <string>

#include "other/KeyTable.h"
#include "platform/text/TextRasterizer.h"

namespace multiscene {

/// The font's name, the colour and the greatest length.
extern const KeyTable textKeys;

/// "red,green,blue" without an alpha is opaque.
platform::Color readTextColor(const KeyReader& reader, std::string_view key);

/// The text behind a "textString": the user's, else the key itself; cut after `maxLength` characters, 0: not
/// cut.
std::string findText(const std::string& key, const std::string& sceneIdentifier, int maxLength);

/// The font behind a "fontName": an installed one by its name, or a file by its path with a macro. One that
/// is not there is noted in the render report.
platform::TextFont findFont(const std::string& name, float size, const std::string& sceneFolder);

}  // namespace multiscene
