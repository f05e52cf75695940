#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "platform/http/Handler.h"
#include "platform/http/Server.h"
#include "studio/api/Router.h"
#include "studio/jobs/Workshop.h"
#include "studio/metrics/MetricsText.h"
#include "studio/webhooks/WebhookSender.h"

namespace multiscene::studio {

/// Counts what happens, and tells it to who monitors: at an address of its own, at this machine alone,
/// without asking who they are. Made and destroyed on the studio's queue; ends before that does.
class Metrics : public platform::http::Handler {
  public:
    using ServerCounts = std::function<platform::http::ServerCounts()>;

    /// `port`: where it listens; below 0: nowhere. Throws platform::Error when the port is taken.
    Metrics(std::shared_ptr<Workshop> shop, const WebhookSender& webhooks, ServerCounts counts, int port);

    /// 0: it does not listen.
    uint16_t port() const { return server_ ? server_->port() : 0; }
    void count(const Router::Answered& answered);
    void stop() { server_.reset(); }

    platform::http::Expectation expect(const platform::http::RequestHead& head) override;
    void handle(platform::http::Request request, platform::http::Responder responder) override;

  private:
    void count(const Job& job, const platform::Value& summary);
    std::string text();
    void addJobs(MetricsText& text);
    void addWork(MetricsText& text);
    void addStorage(MetricsText& text);
    void addHttp(MetricsText& text);

    const std::shared_ptr<Workshop> shop_;
    const WebhookSender& webhooks_;
    const ServerCounts counts_;
    std::map<std::pair<std::string, std::string>, uint64_t> finished_;  ///< by result and reason
    uint64_t frames_ = 0;
    Histogram wait_, duration_;
    std::map<std::string, uint64_t> problems_;                   ///< by code
    std::map<std::pair<std::string, int>, Histogram> requests_;  ///< by route and status
    std::unique_ptr<platform::http::Server> server_;
};

}  // namespace multiscene::studio
