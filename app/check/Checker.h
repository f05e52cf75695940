// Finds everything that is wrong with a template, a scene file or a scene-group file.
#pragma once

#include <filesystem>

#include "app/check/Finding.h"
#include "group/SceneCatalogue.h"

namespace multiscene {

/// Judges a template's folder, its NAME.plist, a scene-group file or a scene file; which it is shows from the
/// content. Never throws for faults of the files: they are findings. Scene numbers of a scene-group
/// file are looked up in `catalogue`; null: its scenes are not judged. A template is judged where it lies.
/// Any thread.
Findings checkPath(const std::filesystem::path& path, SceneCatalogue* catalogue);

}  // namespace multiscene
