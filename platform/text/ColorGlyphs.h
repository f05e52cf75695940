// Fonts whose letters are pictures. For the files of this folder.
#pragma once

using PangoFont = struct _PangoFont;

namespace platform {

/// The picture of emoji and the like is in the font; its outline, if it has one, is not what one wants to
/// see.
bool hasColorGlyphs(PangoFont* font);

}  // namespace platform
