#pragma once

#include <filesystem>
#include <string>

#include "app/template/TemplateFolder.h"

namespace multiscene {

/// Where a file that a record names with path macros lies while the template's folder may still be elsewhere
/// than it will be installed.
std::filesystem::path fileInFolder(const TemplateFolder& folder, const std::string& macroPath);

/// Throws platform::Error(Template), naming file and key, when a scene of the template cannot be played: its
/// file cannot be read, it has no clock, or holds a node, component or clock of an unknown type.
void requirePlayableScenes(const TemplateFolder& folder);

}  // namespace multiscene
