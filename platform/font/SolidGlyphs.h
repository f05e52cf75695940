// Letters as solids. For the files of this folder.
#pragma once

#include "platform/font/Letters.h"
#include "platform/text/ShapedText.h"

namespace platform {

/// All letters of the text as solids, in units of which an em has ShapedText::em, in which the look's lengths
/// are too. Those beyond what one text can hold are listed in `leftOut`.
SolidLetters solidGlyphs(const ShapedText& text, const std::optional<LetterUnit>& part,
                         const SolidLook& look);

}  // namespace platform
