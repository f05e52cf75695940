#pragma once

#include <string>

namespace multiscene {

/// What has drawn the pictures of a job.
struct DrawnBy {
    std::string renderer;  ///< "software" or "gl"
    std::string openGL;    ///< what OpenGL drew with; empty where it was not needed
};

}  // namespace multiscene
