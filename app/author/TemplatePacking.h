#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "app/template/TemplateFolder.h"

namespace multiscene {

/// A further judgement of a template; throws platform::Error to refuse it.
using TemplateJudge = std::function<void(const TemplateFolder&)>;

/// Writes a template's folder as the archive that an installation takes. The same folder gives the same
/// bytes. With `minVersion` the template's own file says that version in the archive. Hidden files stay out.
/// Returns the archive's bytes.
/// Throws Error(Template), and writes nothing, when the folder is no template, holds links or other special
/// files, breaks a rule that archives have to keep, or is refused by `judge`.
uint64_t packTemplate(const std::filesystem::path& folder, const std::filesystem::path& archive,
                      const TemplateJudge& judge = {}, std::optional<float> minVersion = {});

}  // namespace multiscene
