#include "studio/api/Paging.h"

#include <charconv>

#include "studio/api/Problem.h"
#include "studio/api/Schema.h"

namespace multiscene::studio::paging {

using platform::Value;

namespace {

constexpr int64_t kMost = 200;

}  // namespace

Page of(const ApiRequest& request) {
    Page page;
    page.cursor = request.head.parameter("cursor").value_or("");
    const auto limit = request.head.parameter("limit");
    if (!limit) return page;
    const auto read = std::from_chars(limit->data(), limit->data() + limit->size(), page.limit);
    const bool isRead = read.ec == std::errc() && read.ptr == limit->data() + limit->size();
    if (!isRead || page.limit < 1 || page.limit > kMost)
        throw Problem(400, "usage", "\"limit\" is a number from 1 to " + std::to_string(kMost));
    return page;
}

Value answer(const std::string& name, Value::Array items, const Page& page) {
    const bool isMore = static_cast<int64_t>(items.size()) > page.limit;
    if (isMore) items.resize(static_cast<size_t>(page.limit));
    const Value next = isMore ? Value(items.back().string("id")) : Value();
    return Value::Dictionary{{name, std::move(items)}, {"next", next}};
}

Value schema(const char* name, const Value& item) {
    return studio::schema::object(
        {{name, studio::schema::list(item)}, {"next", studio::schema::orNull(studio::schema::text())}});
}

std::vector<Parameter> parameters(std::vector<Parameter> others) {
    others.push_back({"limit", "How many at most, 1 to 200; 50 if not given"});
    others.push_back({"cursor", "Those after this one: \"next\" of an answer"});
    return others;
}

}  // namespace multiscene::studio::paging
