#pragma once

#include <memory>
#include <vector>

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"
#include "studio/previews/PreviewPool.h"

namespace multiscene::studio {

/// /previews: stills of a template that somebody fills in.
class PreviewsApi : public Resource {
  public:
    explicit PreviewsApi(std::shared_ptr<Workshop> shop)
        : shop_(std::move(shop)), pool_(shop_->parts, shop_->uploads, shop_->counters) {}

    std::vector<Route> routes() override;
    /// Somebody looks at a template, and may fill it in next.
    void startAhead() { pool_.startAhead(); }
    void stop() override { pool_.stop(); }

  private:
    using Responder = platform::http::Responder;

    void open(ApiRequest& request, Responder& responder);
    void look(ApiRequest& request, Responder& responder);
    void close(ApiRequest& request, Responder& responder);
    void still(ApiRequest& request, Responder& responder);
    void strip(ApiRequest& request, Responder& responder);
    void frame(ApiRequest& request, Responder& responder);
    PreviewSession& own(const ApiRequest& request);

    const std::shared_ptr<Workshop> shop_;
    PreviewPool pool_;
};

}  // namespace multiscene::studio
