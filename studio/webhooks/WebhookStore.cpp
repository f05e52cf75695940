#include "studio/webhooks/WebhookStore.h"

#include <sstream>

#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Statement;
using platform::Value;

namespace {

constexpr const char* kTables = R"(
CREATE TABLE IF NOT EXISTS webhook(
  id TEXT PRIMARY KEY, session TEXT NOT NULL REFERENCES session ON DELETE CASCADE, url TEXT NOT NULL,
  types TEXT NOT NULL, secret TEXT NOT NULL, created INTEGER NOT NULL, disabled INTEGER NOT NULL DEFAULT 0,
  old_secret TEXT NOT NULL DEFAULT '', old_until INTEGER NOT NULL DEFAULT 0) STRICT;
CREATE TABLE IF NOT EXISTS delivery(
  id TEXT PRIMARY KEY, session TEXT NOT NULL REFERENCES session ON DELETE CASCADE,
  webhook TEXT REFERENCES webhook ON DELETE CASCADE, url TEXT NOT NULL, type TEXT NOT NULL, body TEXT NOT NULL,
  attempt INTEGER NOT NULL, due INTEGER NOT NULL, status INTEGER NOT NULL, message TEXT NOT NULL,
  created INTEGER NOT NULL) STRICT;
CREATE INDEX IF NOT EXISTS delivery_due ON delivery(due);
)";

Webhook webhookOf(const Statement& row) {
    Webhook webhook;
    webhook.id = row.text("id");
    webhook.session = row.text("session");
    webhook.url = row.text("url");
    webhook.types = row.text("types");
    webhook.secret = row.text("secret");
    webhook.created = row.integer("created");
    webhook.isDisabled = row.integer("disabled") != 0;
    webhook.oldSecret = row.text("old_secret");
    webhook.oldUntil = row.integer("old_until");
    return webhook;
}

std::vector<Delivery> deliveriesOf(Statement& rows) {
    std::vector<Delivery> all;
    while (rows.step()) {
        Delivery delivery;
        delivery.id = rows.text("id");
        delivery.session = rows.text("session");
        delivery.webhook = rows.text("webhook");
        delivery.url = rows.text("url");
        delivery.type = rows.text("type");
        delivery.body = rows.text("body");
        delivery.attempt = static_cast<int>(rows.integer("attempt"));
        delivery.due = rows.integer("due");
        delivery.status = static_cast<int>(rows.integer("status"));
        delivery.message = rows.text("message");
        delivery.created = rows.integer("created");
        all.push_back(std::move(delivery));
    }
    return all;
}

}  // namespace

Value valueOf(const Webhook& webhook) {
    Value::Array types;
    std::istringstream words(webhook.types);
    for (std::string word; words >> word;) types.emplace_back(word);
    return Value::Dictionary{
        {"id", webhook.id},
        {"url", webhook.url},
        {"types", std::move(types)},
        {"created", timeText(webhook.created)},
        {"disabled", webhook.isDisabled},
        {"oldSecretUntil", webhook.oldUntil > nowMs() ? Value(timeText(webhook.oldUntil)) : Value()}};
}

Value valueOf(const Delivery& delivery) {
    return Value::Dictionary{{"id", delivery.id},
                             {"type", delivery.type},
                             {"attempt", delivery.attempt},
                             {"status", delivery.status > 0 ? Value(delivery.status) : Value()},
                             {"message", delivery.message.empty() ? Value() : Value(delivery.message)},
                             {"next", delivery.due > 0 ? Value(timeText(delivery.due)) : Value()},
                             {"created", timeText(delivery.created)}};
}

WebhookStore::WebhookStore(platform::Database& database) : database_(database) {
    database_.transaction([this] { database_.execute(kTables); });
}

void WebhookStore::add(const Webhook& webhook) {
    database_
        .prepare("INSERT INTO webhook(id, session, url, types, secret, created) VALUES(?, ?, ?, ?, ?, ?)")
        .bind(1, webhook.id)
        .bind(2, webhook.session)
        .bind(3, webhook.url)
        .bind(4, webhook.types)
        .bind(5, webhook.secret)
        .bind(6, webhook.created)
        .step();
}

std::vector<Webhook> WebhookStore::list(const std::string& session) {
    Statement rows = database_.prepare("SELECT * FROM webhook WHERE session = ? ORDER BY created");
    std::vector<Webhook> all;
    for (rows.bind(1, session); rows.step();) all.push_back(webhookOf(rows));
    return all;
}

std::optional<Webhook> WebhookStore::find(const std::string& id) {
    Statement row = database_.prepare("SELECT * FROM webhook WHERE id = ?");
    return row.bind(1, id).step() ? std::optional(webhookOf(row)) : std::nullopt;
}

void WebhookStore::remove(const std::string& id) {
    database_.prepare("DELETE FROM webhook WHERE id = ?").bind(1, id).step();
}

void WebhookStore::changeSecret(const Webhook& webhook) {
    database_.prepare("UPDATE webhook SET secret = ?, old_secret = ?, old_until = ? WHERE id = ?")
        .bind(1, webhook.secret)
        .bind(2, webhook.oldSecret)
        .bind(3, webhook.oldUntil)
        .bind(4, webhook.id)
        .step();
}

void WebhookStore::disable(const std::string& id) {
    database_.prepare("UPDATE webhook SET disabled = 1 WHERE id = ?").bind(1, id).step();
}

void WebhookStore::add(const Delivery& delivery) {
    database_.prepare("INSERT INTO delivery VALUES(?, ?, nullif(?, ''), ?, ?, ?, 0, ?, 0, '', ?)")
        .bind(1, delivery.id)
        .bind(2, delivery.session)
        .bind(3, delivery.webhook)
        .bind(4, delivery.url)
        .bind(5, delivery.type)
        .bind(6, delivery.body)
        .bind(7, delivery.due)
        .bind(8, delivery.created)
        .step();
}

std::vector<Delivery> WebhookStore::due(int64_t now, int64_t most) {
    Statement rows =
        database_.prepare("SELECT * FROM delivery WHERE due > 0 AND due <= ? ORDER BY due LIMIT ?");
    rows.bind(1, now).bind(2, most);
    return deliveriesOf(rows);
}

std::optional<int64_t> WebhookStore::nextDue() {
    Statement row = database_.prepare("SELECT min(due) AS due FROM delivery WHERE due > 0");
    const int64_t due = row.step() ? row.integer("due") : 0;
    return due > 0 ? std::optional(due) : std::nullopt;
}

void WebhookStore::update(const Delivery& delivery) {
    database_.prepare("UPDATE delivery SET attempt = ?, due = ?, status = ?, message = ? WHERE id = ?")
        .bind(1, int64_t{delivery.attempt})
        .bind(2, delivery.due)
        .bind(3, int64_t{delivery.status})
        .bind(4, delivery.message)
        .bind(5, delivery.id)
        .step();
}

std::vector<Delivery> WebhookStore::deliveries(const std::string& webhook, int64_t most) {
    Statement rows =
        database_.prepare("SELECT * FROM delivery WHERE webhook = ? ORDER BY created DESC, id LIMIT ?");
    rows.bind(1, webhook).bind(2, most);
    return deliveriesOf(rows);
}

void WebhookStore::forgetBefore(int64_t time) {
    database_.prepare("DELETE FROM delivery WHERE due = 0 AND created < ?").bind(1, time).step();
}

}  // namespace multiscene::studio
