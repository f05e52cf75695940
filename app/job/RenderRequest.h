#pragma once

#include <optional>
#include <string>

#include "app/Model/MediaFormat.h"
#include "app/job/JobInputs.h"
#include "painter/Renderer.h"

namespace multiscene {

/// How the music is played. Nothing of it changes what the mix does with music anyway.
struct MusicSettings {
    double volume = 1;               ///< factor, 0 to 4
    double start = 0;                ///< seconds into the file, where each of its rounds begins
    double fadeIn = 0, fadeOut = 0;  ///< seconds, at the film's start and end

    bool operator==(const MusicSettings&) const = default;
};

/// What the user wants rendered, as the command line says it.
struct RenderRequest {
    std::string source;             ///< a template or a scene-group file
    bool isSceneGroupFile = false;  ///< `source` can be nothing else
    JobInputs inputs;
    std::optional<MediaSize> size;       ///< none: the template's
    std::optional<int> mostWidth;        ///< pixels: a wider video is made smaller, in its shape
    std::optional<platform::Fit> fit;    ///< in a video of another shape; none: the template's
    std::optional<int> framesPerSecond;  ///< none: the template's
    std::optional<std::string> music;    ///< a file, or "none"; nothing: the template's
    MusicSettings musicSettings;
    Renderer renderer = Renderer::Auto;
    bool isStrict = false;  ///< what would only be noted is refused
    bool isForced = false;  ///< goes on in spite of errors of the template
    bool isJudged = false;  ///< the template has been judged before, aloud
};

}  // namespace multiscene
