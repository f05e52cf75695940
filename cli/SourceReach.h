#pragma once

#include "app/job/RenderRequest.h"
#include "cli/FencedCommand.h"

namespace multiscene::cli {

/// What a job reads of what its command line names: the template, the inputs, the music, and the files that a
/// --media file lists. What does not exist is left to the job, which says so.
FencedCommand::Errand errandOf(const RenderRequest& request);

/// The same for a template or scene alone.
FencedCommand::Errand errandOf(const std::string& source);

}  // namespace multiscene::cli
