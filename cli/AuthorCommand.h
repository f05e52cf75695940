// What the commands for authors of templates share.
#pragma once

#include <filesystem>
#include <string>

#include "app/author/TemplatePacking.h"
#include "cli/Console.h"

namespace multiscene::cli {

/// Judges a template as "check" does and says each finding; throws platform::Error(Template), ending in
/// `refusal`, when one is an error. The console outlives it.
TemplateJudge judgeAloud(Console& console, const std::string& refusal);

/// What is written must not become a part of what is packed the next time. Throws platform::Error(Usage).
void requireOutside(const std::filesystem::path& folder, const std::filesystem::path& output,
                    const std::string& what);

}  // namespace multiscene::cli
