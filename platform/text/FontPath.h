// The file of an installed font, for those who read fonts themselves.
#pragma once

#include <string>

namespace platform {

/// The font of that name, as for drawn texts, or, where it lacks some of the letters, an installed one that
/// has as many as any. Empty when the system has no fonts.
std::string installedFontPath(const std::string& name, const std::u32string& letters);

}  // namespace platform
