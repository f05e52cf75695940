#pragma once

#include "studio/jobs/TemplateFacts.h"

namespace multiscene::studio {

/// Looks into the catalogue and among the samples at each question.
FindTemplate installedFacts();

}  // namespace multiscene::studio
