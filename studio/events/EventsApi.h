#pragma once

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"

namespace multiscene::studio {

/// /events and /jobs/{id}/events.
class EventsApi : public Resource {
  public:
    explicit EventsApi(std::shared_ptr<Workshop> shop) : shop_(std::move(shop)) {}

    std::vector<Route> routes() override;
    void stop() override { shop_->events.stop(); }

  private:
    void listen(const ApiRequest& request, platform::http::Responder& responder, const std::string& job);

    std::shared_ptr<Workshop> shop_;
};

}  // namespace multiscene::studio
