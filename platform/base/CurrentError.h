#pragma once

#include "platform/base/Error.h"

namespace platform {

/// The exception that is being handled, as an error that a user can be shown: an Error as it is, lack of
/// memory or threads as Transient, everything else as Failed. Only inside a catch block.
Error currentError();

}  // namespace platform
