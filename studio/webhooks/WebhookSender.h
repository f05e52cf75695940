#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "studio/Parts.h"
#include "studio/webhooks/WebhookStore.h"

namespace multiscene::studio {

/// The lines that prove where a delivery comes from, as Standard Webhooks say: "webhook-id",
/// "webhook-timestamp", "webhook-signature", one of each secret. Secrets: "whsec_" and Base64; `seconds`
/// since 1970.
std::vector<std::pair<std::string, std::string>> signedHeaders(const std::vector<std::string>& secrets,
                                                               const std::string& id, int64_t seconds,
                                                               const std::string& body);

/// Tells other servers, and tells them again while they do not take it: after 5 seconds, 5 and 30 minutes,
/// then hours, for three days in all. What waits is on the disk. A few threads of its own, begun with the
/// first delivery. Studio queue.
class WebhookSender {
  public:
    /// What a delivery is signed with; none: whoever was to be told is gone.
    using SecretsOf = std::function<std::vector<std::string>(const Delivery&)>;

    WebhookSender(const Parts& parts, WebhookStore& store, SecretsOf secretsOf);
    ~WebhookSender() { stop(); }

    /// Goes on with what is due.
    void next();
    /// Gives up what is under way, which is tried again at the next start.
    void stop();
    uint64_t delivered() const { return delivered_; }
    uint64_t failed() const { return failed_; }

  private:
    struct Outcome {
        int status = 0;
        std::string message;
        bool isRefused = false;
    };

    void send(const Delivery& delivery, const std::vector<std::string>& secrets);
    void heard(Delivery delivery, const Outcome& outcome);
    void writeDown(const Delivery& delivery);
    bool isAllowed(const std::string& url) const;
    platform::DispatchQueue& threadOf(const std::string& webhook);

    const Parts parts_;
    WebhookStore& store_;
    SecretsOf secretsOf_;
    std::atomic<bool> isStopped_{false};
    std::set<std::string> underWay_;
    uint64_t delivered_ = 0, failed_ = 0;
    int64_t wakesAt_ = 0;
    std::array<std::unique_ptr<platform::DispatchQueue>, 4> threads_;  ///< last: they end first
};

}  // namespace multiscene::studio
