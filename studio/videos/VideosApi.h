#pragma once

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"
#include "studio/videos/VideoLinks.h"

namespace multiscene::studio {

/// /videos, and the links to them that need no session.
class VideosApi : public Resource {
  public:
    explicit VideosApi(std::shared_ptr<Workshop> shop)
        : shop_(std::move(shop)), links_(shop_->parts.folders.studio / "links.key") {}

    std::vector<Route> routes() override;

  private:
    using Responder = platform::http::Responder;

    Video own(const ApiRequest& request);
    void list(ApiRequest& request, Responder& responder);
    void file(ApiRequest& request, Responder& responder);
    void poster(ApiRequest& request, Responder& responder);
    void qr(ApiRequest& request, Responder& responder);
    void change(ApiRequest& request, Responder& responder);
    void remove(ApiRequest& request, Responder& responder);
    void link(ApiRequest& request, Responder& responder);
    void linked(ApiRequest& request, Responder& responder);
    std::string addressOf(const ApiRequest& request, const std::string& token) const;

    std::shared_ptr<Workshop> shop_;
    VideoLinks links_;
};

}  // namespace multiscene::studio
