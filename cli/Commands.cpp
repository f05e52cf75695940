#include "cli/Commands.h"

#include <algorithm>
#include <array>

namespace multiscene::cli {

namespace {

constexpr std::array table{
    CommandEntry{"make", "Make a finished video from a template, texts and photos", makeMakeCommand},
    CommandEntry{"render", "Render a scene-group file to a video", makeRenderCommand},
    CommandEntry{"frames", "Write frames of a template as PNG pictures", makeFramesCommand},
    CommandEntry{"play", "Play a template in a window, with sound", makePlayCommand},
    CommandEntry{"trace", "Print what each frame consists of, a JSON object a frame", makeTraceCommand},
    CommandEntry{"check", "List everything that is wrong with a template or scene", makeCheckCommand},
    CommandEntry{"templates update", "Fetch the list of templates that the server offers",
                 makeTemplatesUpdateCommand},
    CommandEntry{"templates list", "List installed and offered templates", makeTemplatesListCommand},
    CommandEntry{"templates show", "Show what a template asks for, and its previews",
                 makeTemplatesShowCommand},
    CommandEntry{"templates fetch", "Fetch the picture or the video of a template that is offered",
                 makeTemplatesFetchCommand},
    CommandEntry{"templates install", "Install a template from the server or an archive",
                 makeTemplatesInstallCommand},
    CommandEntry{"templates remove", "Remove an installed template", makeTemplatesRemoveCommand},
    CommandEntry{"template new", "Make a small template to start from", makeTemplateNewCommand},
    CommandEntry{"template pack", "Check a template and write its archive", makeTemplatePackCommand},
    CommandEntry{"template publish", "Add a template to a folder that an HTTP server offers",
                 makeTemplatePublishCommand},
    CommandEntry{"template encrypt-track", "Turn a plain corner-pin track into the stored form",
                 makeTemplateEncryptTrackCommand},
    CommandEntry{"studio", "Serve a page where videos are made, and an API for programs", makeStudioCommand},
    CommandEntry{"studio token add", "Let a program use the API, and print its token",
                 makeStudioTokenAddCommand},
    CommandEntry{"studio token list", "List the programs that may use the API", makeStudioTokenListCommand},
    CommandEntry{"studio token remove", "Let a program use the API no more", makeStudioTokenRemoveCommand},
    CommandEntry{"selftest", "Say what keeps jobs from harming this machine, and try to break out",
                 makeSelftestCommand},
    CommandEntry{"scene-format", "Print the reference of templates and scenes, docs/scene-format.md",
                 makeSceneFormatCommand},
    // What the program starts itself with.
    CommandEntry{"intake", "", makeIntakeCommand},
    CommandEntry{"hold", "", makeHoldCommand},
};

struct Group {
    std::string_view name, summary;
};
constexpr std::array groups{
    Group{"templates", "Find, install and remove templates"},
    Group{"template", "Make and publish templates"},
    Group{"studio token", "Say which programs may use the studio's API"},
};

constexpr bool hasGroup(const CommandEntry& entry) {
    const std::string_view name(entry.name);
    const size_t space = name.rfind(' ');
    return space == name.npos ||
           std::ranges::find(groups, name.substr(0, space), &Group::name) != groups.end();
}
static_assert(std::ranges::all_of(table, hasGroup),
              "a command of several words needs its group in the table");

}  // namespace

std::span<const CommandEntry> commands() { return table; }

std::string_view summaryOfGroup(std::string_view group) {
    return std::ranges::find(groups, group, &Group::name)->summary;
}

}  // namespace multiscene::cli
