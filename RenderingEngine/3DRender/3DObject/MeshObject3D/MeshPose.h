#pragma once

#include <glm/glm.hpp>
#include <vector>

#include "platform/mesh/MeshFile.h"

namespace multiscene {

/// Where each node of a mesh file lies, in the file's coordinates: as its animation moves it at that second,
/// or, without one, at rest. Before the first time of a track and after its last one the node keeps what it
/// has there.
std::vector<glm::mat4> poseOf(const platform::MeshFile& file, const platform::MeshAnimation* animation,
                              double seconds);

}  // namespace multiscene
