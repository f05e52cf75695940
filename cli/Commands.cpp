#include "cli/Commands.h"

#include <array>

namespace multiscene::cli {

std::span<const CommandEntry> commands() {
    static constexpr std::array table{
        CommandEntry{"make", "Make a finished video from a template, texts and photos", makeMakeCommand},
        CommandEntry{"render", "Render a scene-group file to a video", makeRenderCommand},
        CommandEntry{"frames", "Write frames of a template as PNG pictures", makeFramesCommand},
        CommandEntry{"trace", "Print what each frame consists of, a JSON object a frame", makeTraceCommand},
        CommandEntry{"check", "List everything that is wrong with a template or scene", makeCheckCommand},
        CommandEntry{"scene-format", "", makeSceneFormatCommand},
    };
    return table;
}

}  // namespace multiscene::cli
