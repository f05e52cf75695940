#pragma once

#include <map>
#include <set>
#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// What a look-up does with the user's value: a text or number, a file, or a video that it plays.
enum class LookUpKind { Text, File, Video };

/// Texts of scene files that are looked up among the user's values.
using LookedUpKeys = std::map<std::string, LookUpKind>;

/// The look-ups of one scene file.
LookedUpKeys lookedUpKeys(const platform::Value& sceneFile);

/// Whether a value stored under `key` answers one of the look-ups, alone or joined with an identifier.
bool isLookedUp(const std::string& key, const LookedUpKeys& lookedUp,
                const std::set<std::string>& identifiers);

}  // namespace multiscene
