#pragma once

#include <set>
#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// Every text of a scene file that is looked up among the user's values.
std::set<std::string> lookedUpKeys(const platform::Value& sceneFile);

/// Whether a value stored under `key` answers one of the look-ups, alone or joined with an identifier.
bool isLookedUp(const std::string& key, const std::set<std::string>& lookedUp,
                const std::set<std::string>& identifiers);

}  // namespace multiscene
