#include "studio/access/SessionStore.h"

#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/crypto/Secret.h"
#include "studio/store/Names.h"
#include "studio/store/StudioDatabase.h"

namespace multiscene::studio {

using platform::Error;
using platform::ErrorKind;
using platform::Statement;

namespace {

constexpr int64_t kDay = int64_t{24} * 3600 * 1000;
constexpr const char* kLocalId = "ses_local";

/// Times are milliseconds since 1970.
constexpr const char* kTables = R"(
CREATE TABLE IF NOT EXISTS session(
  id TEXT PRIMARY KEY, kind TEXT NOT NULL CHECK(kind IN ('local', 'paired', 'token')),
  name TEXT NOT NULL DEFAULT '', scope TEXT NOT NULL CHECK(scope IN ('read', 'make', 'admin')),
  created INTEGER NOT NULL, rating TEXT NOT NULL DEFAULT '') STRICT;
CREATE TABLE IF NOT EXISTS credential(
  digest TEXT PRIMARY KEY, session TEXT NOT NULL REFERENCES session ON DELETE CASCADE,
  created INTEGER NOT NULL, seen INTEGER NOT NULL) STRICT, WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) STRICT, WITHOUT ROWID;
)";
constexpr const char *kToken = "mst", *kCookie = "msc";

Access scopeOf(const std::string& word) {
    for (const Access scope : {Access::Make, Access::Admin})
        if (word == wordOf(scope)) return scope;
    return Access::Read;
}

Session::Kind kindOf(const std::string& word) {
    for (const Session::Kind kind : {Session::Kind::Local, Session::Kind::Paired})
        if (word == wordOf(kind)) return kind;
    return Session::Kind::Token;
}

Session sessionOf(const Statement& row) {
    return {row.text("id"), kindOf(row.text("kind")), row.text("name"), scopeOf(row.text("scope"))};
}

}  // namespace

SessionStore::SessionStore(const std::filesystem::path& database)
    : database_(database.string(), kDatabasePatienceMs) {
    database_.execute("PRAGMA foreign_keys=ON");
    requireKnownVersion(database_);
    database_.transaction([&] {
        database_.execute(kTables);
        database_
            .prepare("INSERT OR IGNORE INTO session(id, kind, scope, created) VALUES(?, 'local', 'admin', ?)")
            .bind(1, kLocalId)
            .bind(2, nowMs())
            .step();
    });
}

std::optional<Session> SessionStore::find(std::string_view secret) {
    const std::string digest = platform::textDigest(secret);
    const int64_t now = nowMs();
    const std::lock_guard lock(mutex_);
    Session session;
    int64_t seen = 0;
    {
        // Nothing can be written while this is open and another connection has written meanwhile.
        Statement row = database_.prepare(
            "SELECT session.*, seen FROM credential JOIN session ON session.id = credential.session WHERE "
            "digest = ?");
        if (!row.bind(1, digest).step()) return std::nullopt;
        session = sessionOf(row);
        seen = row.integer("seen");
    }
    if (session.kind != Session::Kind::Token && now - seen > SessionStore::kUnusedMs) return std::nullopt;
    touch(digest, seen, now);
    return session;
}

/// Once a day is enough to tell what is in use; when it cannot be written, another time.
void SessionStore::touch(const std::string& digest, int64_t seen, int64_t now) {
    if (now - seen < kDay) return;
    try {
        database_.prepare("UPDATE credential SET seen = ? WHERE digest = ?")
            .bind(1, now)
            .bind(2, digest)
            .step();
    } catch (const Error& error) {
        platform::log::info(std::string("studio: ") + error.what());
    }
}

Session SessionStore::local() { return {kLocalId, Session::Kind::Local, "", Access::Admin}; }

Session SessionStore::add(Session::Kind kind, const std::string& name, Access scope) {
    Session session{newName("ses"), kind, name, scope};
    database_.prepare("INSERT INTO session(id, kind, name, scope, created) VALUES(?, ?, ?, ?, ?)")
        .bind(1, session.id)
        .bind(2, wordOf(kind))
        .bind(3, name)
        .bind(4, wordOf(scope))
        .bind(5, nowMs())
        .step();
    return session;
}

Session SessionStore::addPaired(const std::string& name) {
    const std::lock_guard lock(mutex_);
    return add(Session::Kind::Paired, name, Access::Make);
}

std::string SessionStore::addSecret(const Session& session) {
    const std::string secret = newName(session.kind == Session::Kind::Token ? kToken : kCookie);
    const int64_t now = nowMs();
    const std::lock_guard lock(mutex_);
    database_
        .prepare(
            "DELETE FROM credential WHERE seen < ? AND session IN (SELECT id FROM session WHERE kind <> "
            "'token')")
        .bind(1, now - SessionStore::kUnusedMs)
        .step();
    database_.prepare("INSERT INTO credential VALUES(?, ?, ?, ?)")
        .bind(1, platform::textDigest(secret))
        .bind(2, session.id)
        .bind(3, now)
        .bind(4, session.kind == Session::Kind::Token ? 0 : now)
        .step();
    return secret;
}

void SessionStore::forget(std::string_view secret) {
    const std::lock_guard lock(mutex_);
    database_.prepare("DELETE FROM credential WHERE digest = ?").bind(1, platform::textDigest(secret)).step();
}

std::string SessionStore::addToken(const std::string& name, Access scope) {
    for (const Known& each : known())
        if (each.session.kind == Session::Kind::Token && each.session.name == name)
            throw Error(ErrorKind::Usage, "there is a token \"" + name + "\" already");
    const Session session = [&] {
        const std::lock_guard lock(mutex_);
        return add(Session::Kind::Token, name, scope);
    }();
    return addSecret(session);
}

std::vector<SessionStore::Known> SessionStore::known() {
    const std::lock_guard lock(mutex_);
    std::vector<Known> all;
    Statement row = database_.prepare(
        "SELECT session.*, max(seen) AS last FROM credential JOIN session ON session.id = credential.session "
        "GROUP BY session.id ORDER BY session.created");
    while (row.step()) all.push_back({sessionOf(row), row.integer("created"), row.integer("last")});
    return all;
}

bool SessionStore::isKnown(const std::string& id) {
    const std::lock_guard lock(mutex_);
    return database_.prepare("SELECT 1 FROM credential WHERE session = ?").bind(1, id).step();
}

bool SessionStore::revoke(const std::string& id) {
    const std::lock_guard lock(mutex_);
    return database_.prepare("DELETE FROM credential WHERE session = ? RETURNING session").bind(1, id).run();
}

std::string SessionStore::rating(const Session& session) {
    const std::lock_guard lock(mutex_);
    Statement row = database_.prepare("SELECT rating FROM session WHERE id = ?");
    return row.bind(1, session.id).step() ? row.text("rating") : std::string();
}

void SessionStore::setRating(const Session& session, const std::string& answer) {
    const std::lock_guard lock(mutex_);
    database_.prepare("UPDATE session SET rating = ? WHERE id = ?")
        .bind(1, answer)
        .bind(2, session.id)
        .step();
}

bool SessionStore::setting(const std::string& key) {
    const std::lock_guard lock(mutex_);
    Statement row = database_.prepare("SELECT value FROM setting WHERE name = ?");
    return row.bind(1, key).step() && row.text("value") == "true";
}

void SessionStore::setSetting(const std::string& key, bool value) {
    const std::lock_guard lock(mutex_);
    database_.prepare("INSERT OR REPLACE INTO setting VALUES(?, ?)")
        .bind(1, key)
        .bind(2, value ? "true" : "false")
        .step();
}

}  // namespace multiscene::studio
