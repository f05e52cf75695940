// The makers of all subcommands; each is defined in the file of its name.
#pragma once

#include "cli/Command.h"

namespace multiscene::cli {

std::unique_ptr<Command> makeMakeCommand();
std::unique_ptr<Command> makeRenderCommand();
std::unique_ptr<Command> makeFramesCommand();
std::unique_ptr<Command> makeTraceCommand();
std::unique_ptr<Command> makeCheckCommand();
std::unique_ptr<Command> makeSceneFormatCommand();

}  // namespace multiscene::cli
