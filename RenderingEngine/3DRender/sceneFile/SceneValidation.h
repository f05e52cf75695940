// What must hold before a group is played. Missing media and broken shaders are no matter of this: they are
// skipped and counted.
#pragma once

#include <string>
#include <vector>

#include "group/SceneGroup.h"
#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace multiscene {

/// No GL; any thread. Every problem is an Error(Template) naming file and key path, such as
/// "object3D[2].childNode[0].type".
class SceneValidation {
  public:
    using Problems = std::vector<platform::Error>;

    /// Unknown node, component or time-source types, and a missing clock.
    static Problems sceneProblems(const platform::Value& scene, const std::string& file);

    /// An empty list of scenes, scene numbers that the catalogue does not have, scene files that could not be
    /// read, and the problems of every scene, each file once. `file` is what faults of the list are blamed
    /// on.
    static Problems sceneGroupProblems(const SceneGroup& group, const std::string& file);

    /// Throws the first problem of the group.
    static void requirePlayable(const SceneGroup& group, const std::string& file);
};

}  // namespace multiscene
