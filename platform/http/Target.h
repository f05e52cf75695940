#pragma once

#include <string_view>

#include "platform/http/RequestHead.h"

namespace platform::http {

/// Decodes the path and the query of `target` into `head`. Throws Refusal for what does not begin with "/",
/// wrong escapes, what is no UTF-8, NUL and, in the path, control characters, "." and "..", empty parts but
/// the last, and slashes and backslashes that are escaped: nobody can take a part for anything but a name.
void readTarget(std::string_view target, RequestHead& head);

}  // namespace platform::http
