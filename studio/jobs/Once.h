#pragma once

#include <functional>

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"

namespace multiscene::studio {

/// What `work` gives, or what it gave to an earlier request of the same session with the same
/// Idempotency-Key. Throws Problem, also when that was another request.
platform::Value once(Workshop& shop, const ApiRequest& request, const std::function<platform::Value()>& work);

}  // namespace multiscene::studio
