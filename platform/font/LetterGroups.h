// Letters that overlap. For the files of this folder.
#pragma once

#include <span>
#include <tuple>
#include <vector>

#include "platform/text/ShapedText.h"

namespace platform {

/// The placements of the text, in their order, in groups: scripts such as Arabic and Hindi join their letters
/// by letting them overlap, and a half transparent text would show where they do. Letters that touch no other
/// are alone, and so are those with colours of their own. No group has placements of two of the parts, one of
/// which `parts` gives for each placement, nor is one longer than `longest`, in the text's units.
std::vector<std::span<const GlyphPlacement>> letterGroups(const ShapedText& text,
                                                          const std::vector<size_t>& parts, double longest);

/// The shapes of a group and their distances from the first: what looks the same has the same form.
using LetterForm = std::vector<std::tuple<size_t, long, long>>;
LetterForm formOf(std::span<const GlyphPlacement> letters);

}  // namespace platform
