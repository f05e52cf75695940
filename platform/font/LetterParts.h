// What of a text moves on its own. For the files of this folder.
#pragma once

#include <optional>
#include <vector>

#include "platform/font/Letters.h"
#include "platform/text/ShapedText.h"

namespace platform {

struct LetterParts {
    std::vector<LetterPart> parts;    ///< in reading order, in the text's units
    std::vector<size_t> ofPlacement;  ///< the part of each placement of the text; blanks may have any
};

/// `unit`: what is a part; none: the whole text is one.
LetterParts letterParts(const ShapedText& text, std::optional<LetterUnit> unit);

}  // namespace platform
