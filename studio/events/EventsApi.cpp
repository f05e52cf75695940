#include "studio/events/EventsApi.h"

#include <algorithm>

namespace multiscene::studio {

using platform::Value;
using platform::http::Responder;

namespace {

constexpr int64_t kShown = 50;  ///< jobs that a page hears of which has missed more than is kept

}  // namespace

std::vector<Route> EventsApi::routes() {
    const Result stream{200, "text/event-stream", {}};
    return {
        {.method = "GET",
         .pattern = "/api/v1/events",
         .summary = "Events of jobs, videos and templates, as they happen",
         .results = {stream},
         .handle = [this](ApiRequest& request, Responder& responder) { listen(request, responder, ""); }},
        {.method = "GET",
         .pattern = "/api/v1/jobs/{id}/events",
         .summary = "Events of one job",
         .results = {stream},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 const auto job = shop_->jobs.find(request.id());
                 if (!job || job->session != request.session.id) throw notFound("job");
                 listen(request, responder, job->id);
             }},
    };
}

void EventsApi::listen(const ApiRequest& request, Responder& responder, const std::string& job) {
    const auto snapshot = [&] {
        std::vector<Job> jobs;
        if (job.empty())
            jobs = shop_->jobs.list(request.session.id, std::nullopt, kShown, "");
        else if (const auto one = shop_->jobs.find(job))
            jobs.push_back(*one);
        std::reverse(jobs.begin(), jobs.end());
        Value::Array values;
        for (const Job& each : jobs) values.push_back(shop_->queue.show(each));
        return values;
    };
    shop_->events.listen({request.session.id, job, request.language}, request.head.header("Last-Event-ID"),
                         responder.stream(), snapshot);
}

}  // namespace multiscene::studio
