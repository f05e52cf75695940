// The keys under which a template takes values of its user.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "app/job/Playable.h"

namespace multiscene {

enum class InputKind { Text, Photo, File, Video };

/// "a text", "a photo", "a file", "a video".
const char* inputKindName(InputKind kind);

struct AskedFor {
    InputKind kind = InputKind::Text;
    std::shared_ptr<const QVUserInputModelBase> input;  ///< null for a key that only a scene looks up
};

using AskedKeys = std::map<std::string, AskedFor>;

/// The inputs of the template, the look-ups of its scenes and the keys of a group file's own map.
AskedKeys askedKeysOf(const Playable& playable);

}  // namespace multiscene
