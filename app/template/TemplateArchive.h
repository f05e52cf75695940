#pragma once

#include <string>

#include "platform/archive/ZipArchive.h"

namespace multiscene {

/// The name of the one folder that a template's archive holds; empty when it holds none. Throws
/// platform::Error(Template), naming `file`, when anything lies beside that folder, except what macOS adds.
std::string onlyFolderOf(const platform::ZipArchive& archive, const std::string& file);

}  // namespace multiscene
