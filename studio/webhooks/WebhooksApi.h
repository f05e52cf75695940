#pragma once

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"
#include "studio/webhooks/WebhookSender.h"
#include "studio/webhooks/WebhookStore.h"

namespace multiscene::studio {

/// /webhooks, and telling of the ends of jobs.
class WebhooksApi : public Resource {
  public:
    explicit WebhooksApi(std::shared_ptr<Workshop> shop);

    std::vector<Route> routes() override;
    void stop() override { sender_.stop(); }
    const WebhookSender& sender() const { return sender_; }

  private:
    using Responder = platform::http::Responder;

    Webhook own(const ApiRequest& request);
    void create(ApiRequest& request, Responder& responder);
    void list(ApiRequest& request, Responder& responder);
    void test(ApiRequest& request, Responder& responder);
    void deliveries(ApiRequest& request, Responder& responder);
    void tell(const Job& job);
    void add(const std::string& session, const Webhook& webhook, const std::string& type,
             const platform::Value& data);
    void rotate(ApiRequest& request, Responder& responder);
    std::vector<std::string> secretsOf(const Delivery& delivery);
    std::string callbackSecret(const std::string& session) const;

    std::shared_ptr<Workshop> shop_;
    WebhookStore store_;
    WebhookSender sender_;
};

}  // namespace multiscene::studio
