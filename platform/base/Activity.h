// What the program is doing, for whoever watches it from outside: a process that hangs or crashes can no
// longer say it itself.
#pragma once

#include <functional>
#include <string>

#include "platform/base/Error.h"

namespace platform::activity {

/// `stage` and `file` are empty where they have not changed; `blame` says whose fault the file would be. Both
/// empty: work goes on. Called on any thread; must not throw.
using Listener = std::function<void(const std::string& stage, const std::string& file, ErrorKind blame)>;

/// Set once, before there are threads.
void setListener(Listener listener);

/// A part of the work begins, as "judging the template".
void stage(const std::string& stage, ErrorKind blame = ErrorKind::Failed);
/// A file of somebody else is read from now on.
void reading(const std::string& file, ErrorKind blame);
/// The work gets on. Cheap enough for every picture of a film.
void sign();

}  // namespace platform::activity
