#pragma once

#include <map>
#include <optional>
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

/// The look-up that a value stored under `key` answers, alone or joined with an identifier; none when
/// nobody looks it up.
std::optional<LookUpKind> lookUpOf(const std::string& key, const LookedUpKeys& lookedUp,
                                   const std::set<std::string>& identifiers);

}  // namespace multiscene
