#pragma once

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"
#include "studio/uploads/Intake.h"
#include "studio/uploads/UploadLinks.h"

namespace multiscene::studio {

/// /uploads: a session's own photos, videos and sounds.
class UploadsApi : public Resource {
  public:
    explicit UploadsApi(std::shared_ptr<Workshop> shop)
        : shop_(std::move(shop)),
          links_(shop_->parts.folders.studio / "links.key"),
          intake_(shop_->parts, shop_->counters) {}

    std::vector<Route> routes() override;
    void stop() override { intake_.stop(); }

  private:
    using Responder = platform::http::Responder;

    Upload own(const ApiRequest& request);
    void create(ApiRequest& request, Responder& responder);
    void link(ApiRequest& request, Responder& responder);
    void linked(ApiRequest& request, Responder& responder);
    UploadLinks::Grant grantOf(const std::string& token) const;
    /// What is known of the file without looking into it. Throws Problem when it is not taken.
    void judge(Upload& upload, const ApiRequest& request);
    void take(const Upload& upload, ApiRequest& request, Responder& responder);
    void requireRoom(const Upload& upload);
    platform::http::Answer answerTo(const std::string& id, const std::optional<Upload>& upload, int exitCode);
    void proxy(ApiRequest& request, Responder& responder);
    void remove(ApiRequest& request, Responder& responder);

    std::shared_ptr<Workshop> shop_;
    UploadLinks links_;
    Intake intake_;
};

}  // namespace multiscene::studio
