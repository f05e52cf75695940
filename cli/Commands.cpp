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
        CommandEntry{"templates update", "Fetch the list of templates that the server offers",
                     makeTemplatesUpdateCommand},
        CommandEntry{"templates list", "List installed and offered templates", makeTemplatesListCommand},
        CommandEntry{"templates show", "Show what a template asks for, and its previews",
                     makeTemplatesShowCommand},
        CommandEntry{"templates install", "Install a template from the server or an archive",
                     makeTemplatesInstallCommand},
        CommandEntry{"templates remove", "Remove an installed template", makeTemplatesRemoveCommand},
        CommandEntry{"template new", "Make a small template to start from", makeTemplateNewCommand},
        CommandEntry{"template pack", "Check a template and write its archive", makeTemplatePackCommand},
        CommandEntry{"template publish", "Add a template to a folder that an HTTP server offers",
                     makeTemplatePublishCommand},
        CommandEntry{"template encrypt-track", "Turn a plain corner-pin track into the stored form",
                     makeTemplateEncryptTrackCommand},
        CommandEntry{"scene-format", "Print the reference of templates and scenes, docs/scene-format.md",
                     makeSceneFormatCommand},
    };
    return table;
}

std::string_view summaryOfGroup(std::string_view group) {
    return group == "templates" ? "Find, install and remove templates" : "Make and publish templates";
}

}  // namespace multiscene::cli
