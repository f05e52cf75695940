#pragma once

#include "app/job/PreparedGroup.h"
#include "platform/base/Value.h"

namespace multiscene {

/// What a video consists of, as its author wrote it:
///   {"scenes": [{"kind" ("scene", "transition"), "number", "name", "identifier", "file" (from the template's
///     folder), "start" and "frames" (of the video), "nodes": [{"key" (its place in the file), "type",
///     "name", "parent" (index; -1), "first" and "last" (frames of the scene; none where the user's values
///     decide, or nobody), "keys": [{"key", "first", "last"}]}]}],
///    "inputs": [{"key", "kind" ("text", "photo", "video"), "labels" (by language)}]}
/// A transition comes after the scene that it ends; nodes come in the order of the file, parents before their
/// children. "keys" are whatever within a node says when it happens.
platform::Value outlineOf(const PreparedGroup& group);

}  // namespace multiscene
