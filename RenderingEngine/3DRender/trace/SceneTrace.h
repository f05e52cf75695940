#pragma once

#include "platform/base/Value.h"
#include "playback/RenderDriver.h"

namespace multiscene {

/// What a frame consists of, for `trace` and for tests.
class SceneTrace {
  public:
    /// The frame that the driver is about to draw: {"frame", "mode", "scenes": [{"slot", "sceneId",
    /// "identifier", "time", "camera", "lights", "nodes"}]}. Scenes are those that the mode renders, in the
    /// order current, next, transition. Nodes come in tree order, each with the "path" of its indices from
    /// the scene down and the "parent"'s path. Numbers that are not finite are none. Render queue, after
    /// updateMatrix.
    static platform::Value frame(const RenderDriver& driver);
};

}  // namespace multiscene
