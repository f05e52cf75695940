// The templates that ship with the program, below its resources.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/template/TemplateFolder.h"

namespace multiscene {

/// In alphabetical order; none where they were not installed with the program. Throws platform::Error when
/// the program's resources are missing.
std::vector<TemplateFolder> sampleTemplates();

/// By its folder's name, the number of any of its scenes, or its name in the user's language.
std::optional<TemplateFolder> findSampleTemplate(const std::string& numberOrName);

}  // namespace multiscene
