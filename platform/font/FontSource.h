// The font file behind a name. For the files of this folder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/text/TextRasterizer.h"

namespace platform {

/// An installed font by its path, or the bytes of a template's own.
struct FontSource {
    std::string path;
    std::vector<uint8_t> bytes;  ///< empty: `path` counts
};

/// The font that is asked for, or, where it lacks some of the letters, an installed one that has them.
/// `letters`: what is written. Empty when the system has no fonts at all.
FontSource findFontSource(const TextFont& font, const std::u32string& letters);

}  // namespace platform
