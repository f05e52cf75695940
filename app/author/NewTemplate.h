#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "app/data/QVDataManager.h"

namespace multiscene {

/// Makes parent/NAME, a small template with a comment at every key, that can be played at once. `sId` is the
/// number of its scene. Throws Error: Usage for a name that no folder may have or a folder that exists.
std::filesystem::path makeNewTemplate(const std::filesystem::path& parent, const std::string& name,
                                      int64_t sId);

/// A scene number that no installed template uses, the same for the same name.
int64_t unusedSceneNumber(QVDataManager& catalogue, const std::string& name);

}  // namespace multiscene
