// Letters as rectangles with pictures. For the files of this folder.
#pragma once

#include "platform/font/Letters.h"
#include "platform/text/ShapedText.h"

namespace platform {

/// All letters of the text, in units of which an em has ShapedText::em, in which the look's lengths are too.
/// Those for which the atlas has no room are listed in `leftOut`.
FlatLetters flatGlyphs(const ShapedText& text, const std::optional<LetterUnit>& part, const FlatLook& look);

}  // namespace platform
