#pragma once

#include <optional>
#include <string>

#include "app/Job/JobInputs.h"
#include "app/Model/MediaFormat.h"

namespace multiscene {

/// What the user wants rendered, as the command line says it.
struct RenderRequest {
    std::string source;             ///< a template or a scene-group file
    bool isSceneGroupFile = false;  ///< `source` can be nothing else
    JobInputs inputs;
    std::optional<MediaSize> size;       ///< none: the template's
    std::optional<int> framesPerSecond;  ///< none: the template's
    std::optional<std::string> music;    ///< a file, or "none"; nothing: the template's
};

}  // namespace multiscene
