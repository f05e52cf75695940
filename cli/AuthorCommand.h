// What the commands for authors of templates share.
#pragma once

#include "app/author/TemplatePacking.h"
#include "cli/Console.h"

namespace multiscene::cli {

/// Judges a template as "check" does and says each finding; throws platform::Error(Template), ending in
/// `refusal`, when one is an error. The console outlives it.
TemplateJudge judgeAloud(Console& console, const std::string& refusal);

}  // namespace multiscene::cli
