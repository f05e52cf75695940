#pragma once

#include <filesystem>

#include "tests/fuzz/ByteSource.h"

namespace multiscene::fuzz {

/// Writes the folder of a template that `source` decides about, made along the key tables: mostly whole, with
/// here and there a missing part, a wrong type, a number that breaks sums, far too many of something, a
/// cycle, swapped media and any shader. The folder's name is the template's.
void makeTemplate(ByteSource& source, const std::filesystem::path& folder);

}  // namespace multiscene::fuzz
