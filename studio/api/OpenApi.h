#pragma once

#include <deque>

#include "platform/base/Value.h"
#include "studio/api/Route.h"

namespace multiscene::studio {

/// The API's description, OpenAPI 3.1, of what its routes say of themselves.
platform::Value openApi(const std::deque<Route>& routes);

}  // namespace multiscene::studio
