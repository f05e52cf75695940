// Letters as solids. For the files of this folder.
#pragma once

#include "platform/font/Letters.h"
#include "platform/text/ShapedText.h"

namespace platform {

/// All letters of the text extruded by `depth`, in units of which an em has ShapedText::em. Those beyond what
/// one text can hold are listed in `leftOut`.
SolidLetters solidGlyphs(const ShapedText& text, double depth);

}  // namespace platform
