#include "studio/previews/PreviewsApi.h"

#include <algorithm>
#include <charconv>

#include "studio/api/Problem.h"
#include "studio/api/Schema.h"
#include "studio/jobs/JobRequest.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Answer;

namespace {

constexpr int64_t kLeastWidth = 64, kMostWidth = 1080, kUsualWidth = 360;  // pixels
constexpr int64_t kMostFrame = 1'000'000;

Value previewSchema() {
    return schema::object({{"id", schema::text()},
                           {"frames", schema::integer()},
                           {"framesPerSecond", schema::integer()},
                           {"width", schema::integer()},
                           {"height", schema::integer()},
                           {"moments", schema::map(schema::integer())}});
}

Problem gone() {
    return {404, "preview-gone", "there is no such preview, or it was not used for long; open it again"};
}

int64_t numberOf(const std::string& text, int64_t least) {
    int64_t number = -1;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number < least ||
        number > kMostFrame)
        throw Problem(400, "usage", "\"" + text + "\" is no number of a frame");
    return number;
}

}  // namespace

std::vector<Route> PreviewsApi::routes() {
    const auto bound = [this](void (PreviewsApi::*method)(ApiRequest&, Responder&)) {
        return [this, method](ApiRequest& request, Responder& responder) {
            (this->*method)(request, responder);
        };
    };
    const StudioLimits& limits = shop_->parts.settings.limits;
    const Value opening = schema::object({{"template", schema::integer()},
                                          {"values?", request::valuesSchema(limits)},
                                          {"width?", schema::integer(kLeastWidth, kMostWidth)}});
    const Value asking = schema::object(
        {{"values?", request::valuesSchema(limits)}, {"frame", schema::integer(0, kMostFrame)}});
    return {
        {.method = "POST",
         .pattern = "/api/v1/previews",
         .access = Access::Make,
         .body = Body::json(opening),
         .summary = "Holds a template with values ready, for stills",
         .results = {{201, "application/json", previewSchema()}},
         .handle = bound(&PreviewsApi::open)},
        {.method = "GET",
         .pattern = "/api/v1/previews/{id}",
         .summary = "An open preview",
         .results = {{200, "application/json", previewSchema()}},
         .handle = bound(&PreviewsApi::look)},
        {.method = "DELETE",
         .pattern = "/api/v1/previews/{id}",
         .access = Access::Make,
         .summary = "Closes it",
         .results = {{204, "", {}}},
         .handle = bound(&PreviewsApi::close)},
        {.method = "POST",
         .pattern = "/api/v1/previews/{id}/still",
         .access = Access::Make,
         .body = Body::json(asking),
         .summary =
             "A frame with these values, as the video will show it; its number is in X-Frame. 204 when "
             "another one was asked for meanwhile",
         .results = {{200, "image/jpeg", {}}, {204, "", {}}},
         .handle = bound(&PreviewsApi::still)},
        {.method = "GET",
         .pattern = "/api/v1/previews/{id}/strip",
         .summary = "Events \"frame\" {frame, url} with every so manieth frame as it is drawn, then \"end\"",
         .query = {{"every", "How many frames lie between two"}},
         .results = {{200, "text/event-stream", {}}},
         .handle = bound(&PreviewsApi::strip)},
        {.method = "GET",
         .pattern = "/api/v1/previews/{id}/frames/{n}.jpg",
         .summary = "A frame of the strip",
         .query = {{"v", "Tells strips apart for who keeps them"}},
         .results = {{200, "image/jpeg", {}}},
         .handle = bound(&PreviewsApi::frame)},
    };
}

PreviewSession& PreviewsApi::own(const ApiRequest& request) {
    PreviewSession* const found = pool_.use(request.id(), request.session.id);
    if (!found) throw gone();
    return *found;
}

void PreviewsApi::open(ApiRequest& request, Responder& responder) {
    const auto facts = shop_->findTemplate(request.body.integer("template"), request.language);
    if (!facts) throw notFound("template");
    request::judgeValues(request.body["values"], *facts, shop_->uploads, request.session.id);
    const int64_t width = request.body.has("width") ? request.body.integer("width") : kUsualWidth;
    pool_.add(request.session.id, *facts, width).open(request.body["values"], responder);
}

void PreviewsApi::look(ApiRequest& request, Responder& responder) {
    const PreviewSession* const found = pool_.find(request.id(), request.session.id);
    if (!found) throw gone();
    responder.answer(json(200, found->value()));
}

void PreviewsApi::close(ApiRequest& request, Responder& responder) {
    if (!pool_.find(request.id(), request.session.id)) throw gone();
    pool_.remove(request.id());
    responder.answer(Answer(204));
}

void PreviewsApi::still(ApiRequest& request, Responder& responder) {
    own(request).still(request.body["values"], request.body.integer("frame"), responder);
}

void PreviewsApi::strip(ApiRequest& request, Responder& responder) {
    const int64_t every = numberOf(request.head.parameter("every").value_or("10"), 1);
    own(request).strip(every, responder.stream());
}

void PreviewsApi::frame(ApiRequest& request, Responder& responder) {
    const PreviewSession* const found = pool_.find(request.id(), request.session.id);
    if (!found) throw gone();
    const std::string* const bytes = found->frame(numberOf(request.path.at("n"), 0));
    if (!bytes) throw notFound("frame");
    responder.answer(Answer::text(200, *bytes, "image/jpeg").with("Cache-Control", "private, max-age=600"));
}

}  // namespace multiscene::studio
