// Whom to tell of what happens, and what was told.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Value.h"
#include "platform/store/Database.h"

namespace multiscene::studio {

struct Webhook {
    std::string id, session, url;
    std::string types;   ///< those that it hears of, with blanks between them
    std::string secret;  ///< what deliveries are signed with, "whsec_…"
    int64_t created = 0;
    bool isDisabled = false;  ///< its server has said that it is gone
    std::string oldSecret;    ///< what they are signed with, too, until `oldUntil`; empty: nothing
    int64_t oldUntil = 0;     ///< milliseconds since 1970

    bool hears(const std::string& type) const {
        return (" " + types + " ").find(" " + type + " ") != std::string::npos;
    }
};

/// Something that is to be told, or was.
struct Delivery {
    std::string id, session;
    std::string webhook;  ///< empty: the callback of a job
    std::string url, type, body;
    int attempt = 0;
    int64_t due = 0;      ///< milliseconds since 1970; 0: nothing more is tried
    int status = 0;       ///< of the last answer; 0: none
    std::string message;  ///< why there was no answer
    int64_t created = 0;
};

/// As the API shows it, without the secret.
platform::Value valueOf(const Webhook& webhook);
platform::Value valueOf(const Delivery& delivery);

/// Studio queue. Throws platform::Error.
class WebhookStore {
  public:
    /// Makes the tables that are missing.
    explicit WebhookStore(platform::Database& database);

    void add(const Webhook& webhook);
    std::vector<Webhook> list(const std::string& session);
    std::optional<Webhook> find(const std::string& id);
    void remove(const std::string& id);
    void disable(const std::string& id);
    /// The secret and the old one, as the webhook has them.
    void changeSecret(const Webhook& webhook);

    void add(const Delivery& delivery);
    /// Those whose time has come, the oldest first.
    std::vector<Delivery> due(int64_t now, int64_t most);
    std::optional<int64_t> nextDue();
    /// Attempt, due, status and message.
    void update(const Delivery& delivery);
    /// Of a webhook, the newest first.
    std::vector<Delivery> deliveries(const std::string& webhook, int64_t most);
    void forgetBefore(int64_t time);

  private:
    platform::Database& database_;
};

}  // namespace multiscene::studio
