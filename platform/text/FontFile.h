// Font files that templates bring along, usable without being installed. For the files of this folder.
#pragma once

#include <string>

using FcConfig = struct _FcConfig;
using PangoFontDescription = struct _PangoFontDescription;

namespace platform {

/// An open font file: the installed fonts and this one together, and the description that selects it.
struct FontFile {
    const FcConfig* configuration;
    const PangoFontDescription* description;
};

/// The font in the file, through the gate; null when it may not be opened or is no font. The same file is
/// loaded once and stays open until the program ends: the font caches go by its descriptor, whose number must
/// never come to mean another file. Any thread.
const FontFile* openFontFile(const std::string& file);

}  // namespace platform
