// A scene file laid out for the rules that judge it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/check/MediaReader.h"
#include "platform/base/Value.h"

namespace multiscene {

/// A range of frames, both ends inclusive. An end that the user's values decide is unknown.
struct FrameRange {
    std::optional<int64_t> start, end;
};

struct NodeView {
    platform::Value content;
    std::string type, keyPath;
    FrameRange frames;
    int parent = -1;  ///< index of the parent in SceneView::nodes; -1: a top-level node

    /// "photo" (QVQuadObject3D), for messages.
    std::string label() const;
};

struct SceneView {
    std::string file;    ///< the scene file
    std::string folder;  ///< its resource folder, for path macros
    platform::Value content;
    std::vector<NodeView> nodes;  ///< parents before their children
    /// Keys under which the user's values are found in this scene; nothing where nobody says (a scene file on
    /// its own).
    std::optional<std::set<std::string>> userKeys;
    /// Shared by all that are judged together; none where nothing is read.
    std::shared_ptr<MediaReader> media;

    const platform::Value& clock() const { return content["TimeSource"]; }
    /// Number of the clock's last frame; nothing when the file does not say.
    std::optional<int64_t> lastFrame() const;
};

SceneView sceneViewOf(const std::string& file, const std::string& folder, platform::Value content);

/// How many frames a scene with this last one has.
int64_t framesTo(int64_t lastFrame);

/// A frame number as a scene file writes it; nothing when it is missing or names a value of the user.
std::optional<int64_t> frameNumberOf(const platform::Value& value);

}  // namespace multiscene
