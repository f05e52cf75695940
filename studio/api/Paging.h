// Long lists, a part at a time: ?limit=&cursor=, and "next" in the answer.
#pragma once

#include <string>
#include <vector>

#include "platform/base/Value.h"
#include "studio/api/Route.h"

namespace multiscene::studio::paging {

struct Page {
    int64_t limit = 50;
    std::string cursor;  ///< the id of the last one that was seen; empty: none
};

/// Throws Problem 400.
Page of(const ApiRequest& request);
/// `items`: one more than the page's limit, if there are so many. They have an "id".
platform::Value answer(const std::string& name, platform::Value::Array items, const Page& page);
/// What answer() gives.
platform::Value schema(const char* name, const platform::Value& item);
/// These, and those of the page.
std::vector<Parameter> parameters(std::vector<Parameter> others = {});

}  // namespace multiscene::studio::paging
