#pragma once

#include "platform/base/Error.h"
#include "studio/api/Problem.h"
#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// What a run that did not end well has said itself, else what is known of its end.
/// "done", "input", "signal", …: a word for each way to end.
const char* causeOf(const ChildProgram::End& end);
platform::Error errorOf(const ChildProgram::End& end);
Problem problemOf(const ChildProgram::End& end);

}  // namespace multiscene::studio
