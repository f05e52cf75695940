#pragma once

#include <map>
#include <set>
#include <string>

#include "other/KeyTable.h"
#include "platform/base/Value.h"

namespace multiscene {

/// Texts of scene files that are looked up among the user's values, and as what: UserPath wants a file,
/// UserMap a text or a number.
using LookedUpKeys = std::map<std::string, KeyLookup>;

/// The look-ups of one scene file.
LookedUpKeys lookedUpKeys(const platform::Value& sceneFile);

/// Whether a value stored under `key` answers one of the look-ups, alone or joined with an identifier.
bool isLookedUp(const std::string& key, const LookedUpKeys& lookedUp,
                const std::set<std::string>& identifiers);

}  // namespace multiscene
