#pragma once

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"

namespace multiscene::studio {

/// What a job looks like, for the API's description.
platform::Value jobResultSchema();

/// /jobs, and what becomes a job: installing a template, asking what is offered.
class JobsApi : public Resource {
  public:
    explicit JobsApi(std::shared_ptr<Workshop> shop) : shop_(std::move(shop)) {}

    std::vector<Route> routes() override;
    void stop() override { shop_->queue.stop(); }

  private:
    using Responder = platform::http::Responder;

    platform::Value shown(const Job& job, const ApiRequest& request);
    Job own(const ApiRequest& request);
    TemplateFacts facts(int64_t id, const ApiRequest& request) const;
    platform::Value submitted(const platform::Value& body, const ApiRequest& request);
    platform::http::Answer accepted(const platform::Value& job) const;
    /// Answers with the job that `submit` makes, or with the one that a request of the same key has made.
    void once(ApiRequest& request, Responder& responder, const std::function<platform::Value()>& submit);

    void create(ApiRequest& request, Responder& responder);
    void list(ApiRequest& request, Responder& responder);
    void picture(ApiRequest& request, Responder& responder);
    void cancel(ApiRequest& request, Responder& responder);
    void copy(ApiRequest& request, Responder& responder);
    void install(ApiRequest& request, Responder& responder);
    void refresh(ApiRequest& request, Responder& responder);

    std::shared_ptr<Workshop> shop_;
};

}  // namespace multiscene::studio
