// Font files that templates bring along, usable without being installed. For the files of this folder.
#pragma once

using FcConfig = struct _FcConfig;
using PangoFontDescription = struct _PangoFontDescription;

namespace platform {

/// Stays open until the program ends: the font caches go by its descriptor, whose number must never come to
/// mean another file. The installed fonts and this one together, and the description that selects it.
struct FontFile {
    const FcConfig* configuration;
    const PangoFontDescription* description;
};

}  // namespace platform
