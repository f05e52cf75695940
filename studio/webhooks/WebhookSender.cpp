#include "studio/webhooks/WebhookSender.h"

#include <algorithm>
#include <chrono>

#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/crypto/Base64.h"
#include "platform/crypto/Hmac.h"
#include "platform/net/HttpPost.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

namespace {

constexpr int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute;
/// Milliseconds between two attempts.
constexpr std::array kPauses = {5 * kSecond, 5 * kMinute, 30 * kMinute, 2 * kHour, 5 * kHour,
                                10 * kHour,  14 * kHour,  20 * kHour,   24 * kHour};
constexpr int64_t kAtOnce = 8;
constexpr std::chrono::minutes kNextTry{1};  // of what could not be read or written down
constexpr int kGone = 410;
constexpr std::string_view kSecretStart = "whsec_";

/// "example.org" of "https://user@example.org:8443/path".
std::string hostOf(const std::string& url) {
    const size_t start = url.find("://") + 3;
    std::string host = url.substr(start, url.find_first_of("/?#", start) - start);
    host = host.substr(host.rfind('@') + 1);
    return host.starts_with('[') ? host.substr(0, host.find(']') + 1) : host.substr(0, host.find(':'));
}

}  // namespace

std::vector<std::pair<std::string, std::string>> signedHeaders(const std::vector<std::string>& secrets,
                                                               const std::string& id, int64_t seconds,
                                                               const std::string& body) {
    const std::string time = std::to_string(seconds);
    std::string signatures;
    for (const std::string& secret : secrets) {
        const std::string key =
            platform::fromBase64(std::string_view(secret).substr(kSecretStart.size())).value_or("");
        signatures += (signatures.empty() ? "v1," : " v1,") +
                      platform::base64(platform::hmacSha256(key, id + "." + time + "." + body));
    }
    return {{"Content-Type", "application/json"},
            {"webhook-id", id},
            {"webhook-timestamp", time},
            {"webhook-signature", signatures}};
}

WebhookSender::WebhookSender(const Parts& parts, WebhookStore& store, SecretsOf secretsOf)
    : parts_(parts), store_(store), secretsOf_(std::move(secretsOf)) {}

void WebhookSender::next() {
    if (isStopped_) return;
    try {
        for (const Delivery& delivery :
             store_.due(nowMs(), kAtOnce + static_cast<int64_t>(underWay_.size()))) {
            if (underWay_.contains(delivery.id)) continue;
            const auto secrets = secretsOf_(delivery);
            underWay_.insert(delivery.id);
            if (secrets.empty())
                heard(delivery, {.status = kGone, .message = {}, .isRefused = false});
            else
                send(delivery, secrets);
        }
        const auto due = store_.nextDue();
        const int64_t now = nowMs();
        if (!due || *due <= now || (wakesAt_ > now && wakesAt_ <= *due)) return;
        wakesAt_ = *due;
        parts_.timers.after(std::chrono::milliseconds(*due - now + 1), [this] {
            wakesAt_ = 0;  // the clock may have been set back meanwhile
            next();
        });
    } catch (const std::exception& failure) {
        platform::log::info(std::string("studio: webhooks: ") + failure.what());
        parts_.timers.after(kNextTry, [this] { next(); });
    }
}

bool WebhookSender::isAllowed(const std::string& url) const {
    const auto& allowed = parts_.settings.webhookAllow;
    return std::find(allowed.begin(), allowed.end(), hostOf(url)) != allowed.end();
}

/// One that answers slowly holds up those of its own thread alone.
platform::DispatchQueue& WebhookSender::threadOf(const std::string& webhook) {
    auto& thread = threads_[std::hash<std::string>()(webhook) % threads_.size()];
    if (!thread) thread = std::make_unique<platform::DispatchQueue>("webhooks");
    return *thread;
}

void WebhookSender::send(const Delivery& delivery, const std::vector<std::string>& secrets) {
    platform::DispatchQueue& thread = threadOf(delivery.webhook.empty() ? delivery.url : delivery.webhook);
    platform::HttpPost post{.url = delivery.url,
                            .body = delivery.body,
                            .headers = signedHeaders(secrets, delivery.id, nowMs() / kSecond, delivery.body),
                            .reachesPrivate = isAllowed(delivery.url),
                            .isCancelled = [this] { return isStopped_.load(); }};
    thread.async([this, delivery, post = std::move(post)] {
        Outcome outcome;
        if (isStopped_) return;
        try {
            outcome.status = platform::send(post);
        } catch (const platform::Error& failure) {
            if (failure.kind() == platform::ErrorKind::Cancelled) return;
            outcome.message = failure.message();
            outcome.isRefused = failure.kind() != platform::ErrorKind::Transient;
        }
        parts_.queue.async([this, delivery, outcome] { heard(delivery, outcome); });
    });
}

void WebhookSender::heard(Delivery delivery, const Outcome& outcome) {
    if (isStopped_) return;
    const bool isTaken = outcome.status >= 200 && outcome.status < 300;
    const auto attempt = static_cast<size_t>(delivery.attempt++);
    const bool isLast = isTaken || outcome.isRefused || outcome.status == kGone || attempt >= kPauses.size();
    delivery.due = isLast ? 0 : nowMs() + kPauses[attempt];
    delivery.status = outcome.status;
    delivery.message = outcome.message;
    ++(isTaken ? delivered_ : failed_);
    writeDown(delivery);
    parts_.queue.async([this] { next(); });
}

/// Until it stands on the disk it is under way: what was told already would be told again at once.
void WebhookSender::writeDown(const Delivery& delivery) {
    if (isStopped_) return;
    try {
        store_.update(delivery);
        if (delivery.status == kGone && !delivery.webhook.empty()) store_.disable(delivery.webhook);
        underWay_.erase(delivery.id);
    } catch (const platform::Error& failure) {
        platform::log::info(std::string("studio: webhooks: ") + failure.what());
        parts_.timers.after(kNextTry, [this, delivery] {
            writeDown(delivery);
            next();
        });
    }
}

void WebhookSender::stop() {
    isStopped_ = true;
    for (auto& thread : threads_) thread.reset();
}

}  // namespace multiscene::studio
