#pragma once

#include "app/job/RenderRequest.h"
#include "cli/FencedWork.h"

namespace multiscene::cli {

/// What a job reads of what its command line names: the template, the inputs, the music, and the files that a
/// --media file lists. What does not exist is left to the job, which says so.
Errand errandOf(const RenderRequest& request);

/// The same for a template or scene alone.
Errand errandOf(const std::string& source);

}  // namespace multiscene::cli
