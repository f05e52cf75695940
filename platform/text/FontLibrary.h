// From the name or file of a font to what the layout takes. For the files of this folder.
#pragma once

#include <memory>

#include "platform/text/TextRasterizer.h"

using PangoFontMap = struct _PangoFontMap;
using PangoFontDescription = struct _PangoFontDescription;

namespace platform {

struct FontDescriptionDeleter {
    void operator()(PangoFontDescription* description) const;
};
using FontDescription = std::unique_ptr<PangoFontDescription, FontDescriptionDeleter>;

struct FontChoice {
    PangoFontMap* map;  ///< of the calling thread; lives as long as it
    FontDescription description;
};

/// Never fails: what cannot be found is replaced by the system's default font.
FontChoice chooseFont(const TextFont& font);

}  // namespace platform
