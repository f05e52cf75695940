#include "studio/jobs/JobsApi.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "studio/api/Paging.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"
#include "studio/jobs/JobRequest.h"
#include "studio/jobs/Once.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Answer;

namespace {

constexpr uint64_t kMostPicture = 1 << 20;

Value copySchema(const StudioLimits& limits) {
    return schema::object({{"values?", request::valuesSchema(limits)},
                           {"music?", schema::orNull(request::musicSchema())},
                           {"size?", schema::orNull(request::sizeSchema())},
                           {"draft?", schema::boolean()},
                           {"title?", schema::text(200)}});
}

/// `request` with what `changes` says otherwise; of the values key by key.
Value changed(Value request, const Value& changes) {
    for (const auto& [name, value] : changes.dictionary()) {
        if (name != "values") {
            request = request.with(name, value);
            continue;
        }
        Value values = request["values"];
        if (!values) values = Value::Dictionary{};
        for (const auto& [key, each] : value.dictionary()) values = values.with(key, each);
        request = request.with("values", values);
    }
    return request;
}

}  // namespace

Value jobResultSchema() {
    const Value textOrNull = schema::orNull(schema::text()), timeOrNull = schema::orNull(schema::time());
    return schema::object(
        {{"id", schema::text()},
         {"kind", schema::word({"video", "draft", "install", "refresh"})},
         {"state",
          schema::word({"queued", "running", "cancelling", "done", "failed", "cancelled", "expired"})},
         {"stage", schema::orNull(schema::word({"preparing", "rendering", "mixing", "publishing"}))},
         {"template", schema::object({{"id", schema::integer()}, {"title", schema::text()}})},
         {"frame", schema::integer()},
         {"total", schema::integer()},
         {"secondsRemaining", schema::orNull(schema::number())},
         {"place", schema::orNull(schema::integer())},
         {"attempt", schema::integer()},
         {"created", schema::time()},
         {"started", timeOrNull},
         {"ended", timeOrNull},
         {"problem", schema::orNull(schema::problem())},
         {"video", textOrNull},
         {"title", schema::text()},
         {"metadata", schema::anything()}});
}

std::vector<Route> JobsApi::routes() {
    const auto bound = [this](void (JobsApi::*method)(ApiRequest&, Responder&)) {
        return [this, method](ApiRequest& request, Responder& responder) {
            (this->*method)(request, responder);
        };
    };
    const Value job = jobResultSchema();
    const Result accepted{202, "application/json", job}, shown{200, "application/json", job};
    return {
        {.method = "POST",
         .pattern = "/api/v1/jobs",
         .access = Access::Make,
         .body = Body::json(request::jobSchema(shop_->parts.settings.limits)),
         .summary = "Asks for a video; an Idempotency-Key makes it be made once",
         .results = {accepted},
         .handle = bound(&JobsApi::create)},
        {.method = "GET",
         .pattern = "/api/v1/jobs",
         .summary = "Jobs, the newest first",
         .query = paging::parameters({{"state", "Only those in this state"}}),
         .results = {{200, "application/json", paging::schema("jobs", job)}},
         .handle = bound(&JobsApi::list)},
        {.method = "GET",
         .pattern = "/api/v1/jobs/{id}",
         .summary = "A job",
         .results = {shown},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 responder.answer(json(200, this->shown(own(request), request)));
             }},
        {.method = "GET",
         .pattern = "/api/v1/jobs/{id}/request",
         .summary = "What a job was asked for with",
         .results = {{200, "application/json", schema::anything()}},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 responder.answer(json(200, request::asked(own(request), shop_->uploads)));
             }},
        {.method = "GET",
         .pattern = "/api/v1/jobs/{id}/picture.jpg",
         .summary = "The frame that is being drawn",
         .results = {{200, "image/jpeg", {}}},
         .handle = bound(&JobsApi::picture)},
        {.method = "POST",
         .pattern = "/api/v1/jobs/{id}/cancel",
         .access = Access::Make,
         .summary = "Ends a job",
         .results = {accepted},
         .handle = bound(&JobsApi::cancel)},
        {.method = "POST",
         .pattern = "/api/v1/jobs/{id}/copies",
         .access = Access::Make,
         .body = Body::json(copySchema(shop_->parts.settings.limits)),
         .summary = "Asks for the same again, with changes",
         .results = {accepted},
         .handle = bound(&JobsApi::copy)},
        {.method = "POST",
         .pattern = "/api/v1/templates/{id}/installation",
         .access = Access::Make,
         .summary = "Installs an offered template",
         .results = {accepted},
         .handle = bound(&JobsApi::install)},
        {.method = "POST",
         .pattern = "/api/v1/catalogue/refresh",
         .access = Access::Make,
         .summary = "Asks the template server what it offers",
         .results = {accepted},
         .handle = bound(&JobsApi::refresh)},
    };
}

Value JobsApi::shown(const Job& job, const ApiRequest& request) {
    const Value value = shop_->queue.show(job);
    return job.problem ? value.with("problem", inLanguage(job.problem, request.language)) : value;
}

Job JobsApi::own(const ApiRequest& request) {
    const auto job = shop_->jobs.find(request.id());
    if (!job || job->session != request.session.id) throw notFound("job");
    return *job;
}

TemplateFacts JobsApi::facts(int64_t id, const ApiRequest& request) const {
    const auto facts = shop_->findTemplate(id, request.language);
    if (facts) return *facts;
    Problem problem(422, "no-such-template", "there is no such template here");
    problem.errors.push_back({"/template", "", problem.detail});
    throw problem;
}

Value JobsApi::submitted(const Value& body, const ApiRequest& request) {
    const TemplateFacts template_ = facts(body.integer("template"), request);
    auto planned =
        request::plan(body, template_, shop_->uploads, request.session.id, shop_->parts.settings.limits);
    planned.job.session = request.session.id;
    planned.job.cost = shop_->queue.estimate(template_.id, template_.frames, planned.pixels);
    return shop_->queue.show(shop_->queue.submit(planned.job, planned.uploads));
}

Answer JobsApi::accepted(const Value& job) const {
    return json(202, job).with("Location", "/api/v1/jobs/" + job.string("id"));
}

void JobsApi::once(ApiRequest& request, Responder& responder, const std::function<Value()>& submit) {
    responder.answer(accepted(studio::once(*shop_, request, submit)));
}

void JobsApi::create(ApiRequest& request, Responder& responder) {
    once(request, responder, [&] { return submitted(request.body, request); });
}

void JobsApi::copy(ApiRequest& request, Responder& responder) {
    once(request, responder, [&] {
        const Job original = own(request);
        if (!isDrawn(original.kind)) throw Problem(409, "not-a-video", "only videos can be made again");
        return submitted(changed(original.request, request.body), request);
    });
}

void JobsApi::list(ApiRequest& request, Responder& responder) {
    const auto page = paging::of(request);
    const std::string word = request.head.parameter("state").value_or("");
    const auto state = jobStateNamed(word);
    if (!word.empty() && !state) throw Problem(400, "usage", "there is no state \"" + word + "\"");
    Value::Array jobs;
    for (const Job& job : shop_->jobs.list(request.session.id, state, page.limit + 1, page.cursor))
        jobs.push_back(shown(job, request));
    responder.answer(json(200, paging::answer("jobs", std::move(jobs), page)));
}

/// Whatever the worker has written there is shown as a picture, or not at all.
void JobsApi::picture(ApiRequest& request, Responder& responder) {
    const auto path = shop_->queue.pictureOf(own(request).id);
    const platform::FileHandle file =
        path.empty() ? platform::FileHandle() : platform::openFile(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!file || !file.isRegular()) throw notFound("picture yet");
    const auto bytes = platform::readFile(file, path.string(), kMostPicture);
    responder.answer(Answer::text(200, {bytes.begin(), bytes.end()}, "image/jpeg"));
}

void JobsApi::cancel(ApiRequest& request, Responder& responder) {
    const Job job = own(request);
    if (!shop_->queue.cancel(job)) throw Problem(409, "has-ended", "the job has ended already");
    responder.answer(accepted(shop_->queue.show(own(request))));
}

void JobsApi::install(ApiRequest& request, Responder& responder) {
    once(request, responder, [&] {
        Job job;
        job.kind = JobKind::Install;
        job.session = request.session.id;
        const std::string& id = request.id();
        job.templateId = std::strtoll(id.c_str(), nullptr, 10);
        if (std::to_string(job.templateId) != id) throw notFound("template");
        if (const auto known = shop_->findTemplate(job.templateId, request.language))
            job.title = known->title;
        job.templateTitle = job.title;
        return shop_->queue.show(shop_->queue.submit(job, {}));
    });
}

void JobsApi::refresh(ApiRequest& request, Responder& responder) {
    once(request, responder, [&] {
        Job job;
        job.kind = JobKind::Refresh;
        job.session = request.session.id;
        return shop_->queue.show(shop_->queue.submit(job, {}));
    });
}

}  // namespace multiscene::studio
