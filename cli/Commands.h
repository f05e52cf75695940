// The makers of all subcommands; each is defined in the file of its name.
#pragma once

#include "cli/Command.h"

namespace multiscene::cli {

std::unique_ptr<Command> makeMakeCommand();
std::unique_ptr<Command> makeRenderCommand();
std::unique_ptr<Command> makeIntakeCommand();
std::unique_ptr<Command> makeHoldCommand();
std::unique_ptr<Command> makeFramesCommand();
std::unique_ptr<Command> makePlayCommand();
std::unique_ptr<Command> makeTraceCommand();
std::unique_ptr<Command> makeCheckCommand();
std::unique_ptr<Command> makeSceneFormatCommand();
std::unique_ptr<Command> makeSelftestCommand();
std::unique_ptr<Command> makeTemplatesUpdateCommand();
std::unique_ptr<Command> makeTemplatesListCommand();
std::unique_ptr<Command> makeTemplatesShowCommand();
std::unique_ptr<Command> makeTemplatesFetchCommand();
std::unique_ptr<Command> makeTemplatesInstallCommand();
std::unique_ptr<Command> makeTemplatesRemoveCommand();
std::unique_ptr<Command> makeStudioCommand();
std::unique_ptr<Command> makeStudioTokenAddCommand();
std::unique_ptr<Command> makeStudioTokenListCommand();
std::unique_ptr<Command> makeStudioTokenRemoveCommand();
std::unique_ptr<Command> makeTemplateNewCommand();
std::unique_ptr<Command> makeTemplatePackCommand();
std::unique_ptr<Command> makeTemplatePublishCommand();
std::unique_ptr<Command> makeTemplateEncryptTrackCommand();

}  // namespace multiscene::cli
