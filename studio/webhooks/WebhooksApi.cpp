#include "studio/webhooks/WebhooksApi.h"

#include <algorithm>

#include "platform/base/Json.h"
#include "platform/crypto/Base64.h"
#include "platform/crypto/Hmac.h"
#include "platform/crypto/Secret.h"
#include "platform/net/HttpDownload.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"
#include "studio/store/KeyFile.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;

namespace {

constexpr int64_t kShown = 100;
constexpr int64_t kStays = int64_t{30} * 24 * 3600 * 1000;
constexpr size_t kSecretLetters = 48;
constexpr int64_t kHour = 3600 * 1000, kUsualRotation = 24, kMostRotation = 24 * 7;

Value typesSchema() {
    return schema::list(schema::word({"job.done", "job.failed", "job.cancelled", "template.installed"}), 4);
}

Value webhookSchema() {
    return schema::object({{"id", schema::text()},
                           {"url", schema::address()},
                           {"types", typesSchema()},
                           {"created", schema::time()},
                           {"disabled", schema::boolean()},
                           {"oldSecretUntil", schema::orNull(schema::time())}});
}

Value deliverySchema() {
    return schema::object({{"id", schema::text()},
                           {"type", schema::text()},
                           {"attempt", schema::integer()},
                           {"status", schema::orNull(schema::integer())},
                           {"message", schema::orNull(schema::text())},
                           {"next", schema::orNull(schema::time())},
                           {"created", schema::time()}});
}

std::string newSecret() { return "whsec_" + platform::base64(platform::randomLetters(kSecretLetters)); }

/// Empty: nobody is told of it.
std::string typeOf(const Job& job) {
    if (job.kind == JobKind::Install) return job.state == JobState::Done ? "template.installed" : "";
    return isDrawn(job.kind) ? std::string("job.") + wordOf(job.state) : "";
}

}  // namespace

WebhooksApi::WebhooksApi(std::shared_ptr<Workshop> shop)
    : shop_(std::move(shop)),
      store_(shop_->parts.database),
      sender_(shop_->parts, store_, [this](const Delivery& delivery) { return secretsOf(delivery); }) {
    shop_->queue.addListener([this](const Job& job, const Value&) { tell(job); });
    store_.forgetBefore(nowMs() - kStays);
    sender_.next();
}

std::vector<Route> WebhooksApi::routes() {
    const auto bound = [this](void (WebhooksApi::*method)(ApiRequest&, Responder&)) {
        return [this, method](ApiRequest& request, Responder& responder) {
            (this->*method)(request, responder);
        };
    };
    const Value webhook = webhookSchema();
    const std::string one = "/api/v1/webhooks/{id}";
    return {
        {.method = "POST",
         .pattern = "/api/v1/webhooks",
         .access = Access::Make,
         .body = Body::json(schema::object({{"url", schema::text(2000)}, {"types?", typesSchema()}})),
         .summary = "Has a server told of what happens; the secret is shown this once",
         .results = {{201, "application/json", schema::extended(webhook, {{"secret", schema::text()}})}},
         .handle = bound(&WebhooksApi::create)},
        {.method = "GET",
         .pattern = "/api/v1/webhooks",
         .access = Access::Make,
         .summary = "Who is told; \"callbackSecret\" is what callbacks of jobs are signed with",
         .results = {{200, "application/json",
                      schema::object(
                          {{"webhooks", schema::list(webhook)}, {"callbackSecret", schema::text()}})}},
         .handle = bound(&WebhooksApi::list)},
        {.method = "DELETE",
         .pattern = one,
         .access = Access::Make,
         .summary = "Tells it nothing more",
         .results = {{204, "", {}}},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 store_.remove(own(request).id);
                 responder.answer(platform::http::Answer(204));
             }},
        {.method = "POST",
         .pattern = one + "/rotation",
         .access = Access::Make,
         .body = Body::json(schema::object({{"hours?", schema::integer(0, kMostRotation)}})),
         .summary = "Gives it a new secret, shown this once; for so many hours, 24 if not said, the old one "
                    "signs, too",
         .results = {{200, "application/json", schema::extended(webhook, {{"secret", schema::text()}})}},
         .handle = bound(&WebhooksApi::rotate)},
        {.method = "POST",
         .pattern = one + "/test",
         .access = Access::Make,
         .summary = "Tells it something, as a test",
         .results = {{202, "", {}}},
         .handle = bound(&WebhooksApi::test)},
        {.method = "GET",
         .pattern = one + "/deliveries",
         .access = Access::Make,
         .summary = "What it was told, the newest first",
         .results = {{200, "application/json",
                      schema::object({{"deliveries", schema::list(deliverySchema())}})}},
         .handle = bound(&WebhooksApi::deliveries)},
    };
}

Webhook WebhooksApi::own(const ApiRequest& request) {
    const auto webhook = store_.find(request.id());
    if (!webhook || webhook->session != request.session.id) throw notFound("webhook");
    return *webhook;
}

void WebhooksApi::create(ApiRequest& request, Responder& responder) {
    Webhook webhook;
    webhook.url = request.body.string("url");
    if (!platform::isHttpUrl(webhook.url))
        throw Problem(422, "no-address", "\"url\" is no http or https address");
    if (store_.list(request.session.id).size() >= shop_->parts.settings.limits.webhooks)
        throw Problem(429, "too-many", "there are too many webhooks");
    webhook.id = newName("whk");
    webhook.session = request.session.id;
    webhook.secret = newSecret();
    webhook.created = nowMs();
    for (const Value& type : request.body.array("types")) webhook.types += type.stringValue() + " ";
    if (webhook.types.empty()) webhook.types = "job.done job.failed job.cancelled template.installed";
    store_.add(webhook);
    responder.answer(json(201, valueOf(webhook).with("secret", webhook.secret)));
}

void WebhooksApi::rotate(ApiRequest& request, Responder& responder) {
    Webhook webhook = own(request);
    webhook.oldSecret = std::exchange(webhook.secret, newSecret());
    const int64_t hours = request.body.has("hours") ? request.body.integer("hours") : kUsualRotation;
    webhook.oldUntil = nowMs() + hours * kHour;
    store_.changeSecret(webhook);
    responder.answer(json(200, valueOf(webhook).with("secret", webhook.secret)));
}

void WebhooksApi::list(ApiRequest& request, Responder& responder) {
    Value::Array all;
    for (const Webhook& webhook : store_.list(request.session.id)) all.push_back(valueOf(webhook));
    responder.answer(json(200, Value::Dictionary{{"webhooks", std::move(all)},
                                                 {"callbackSecret", callbackSecret(request.session.id)}}));
}

void WebhooksApi::test(ApiRequest& request, Responder& responder) {
    add(request.session.id, own(request), "test", Value::Dictionary{});
    responder.answer(platform::http::Answer(202));
}

void WebhooksApi::deliveries(ApiRequest& request, Responder& responder) {
    Value::Array all;
    for (const Delivery& delivery : store_.deliveries(own(request).id, kShown))
        all.push_back(valueOf(delivery));
    responder.answer(json(200, Value::Dictionary{{"deliveries", std::move(all)}}));
}

void WebhooksApi::tell(const Job& job) {
    const std::string type = typeOf(job);
    if (type.empty()) return;
    const Value data = shop_->queue.show(job);
    for (const Webhook& webhook : store_.list(job.session))
        if (webhook.hears(type) && !webhook.isDisabled) add(job.session, webhook, type, data);
    if (job.callback.empty()) return;
    Webhook callback;
    callback.url = job.callback;
    add(job.session, callback, type, data);
}

void WebhooksApi::add(const std::string& session, const Webhook& webhook, const std::string& type,
                      const Value& data) {
    Delivery delivery;
    delivery.id = newName("msg");
    delivery.session = session;
    delivery.webhook = webhook.id;
    delivery.url = webhook.url;
    delivery.type = type;
    delivery.created = delivery.due = nowMs();
    delivery.body = platform::jsonText(
        Value::Dictionary{{"type", type}, {"timestamp", timeText(delivery.created)}, {"data", data}});
    store_.add(delivery);
    sender_.next();
}

std::vector<std::string> WebhooksApi::secretsOf(const Delivery& delivery) {
    if (delivery.webhook.empty()) return {callbackSecret(delivery.session)};
    const auto webhook = store_.find(delivery.webhook);
    if (!webhook || webhook->isDisabled) return {};
    std::vector<std::string> secrets{webhook->secret};
    if (webhook->oldUntil > nowMs()) secrets.push_back(webhook->oldSecret);
    return secrets;
}

std::string WebhooksApi::callbackSecret(const std::string& session) const {
    const std::string key = keyOf(shop_->parts.folders.studio / "callbacks.key");
    return "whsec_" + platform::base64(platform::hmacSha256(key, "callbacks\n" + session));
}

}  // namespace multiscene::studio
