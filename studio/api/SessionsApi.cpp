#include "studio/api/SessionsApi.h"

#include <algorithm>

#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Answer;
using platform::http::RequestHead;
using platform::http::Responder;

namespace {

constexpr std::chrono::seconds kMinute{60};

Value who(const Session& session, const std::string& token) {
    return Value::Dictionary{{"kind", wordOf(session.kind)},
                             {"name", session.name},
                             {"scope", wordOf(session.scope)},
                             {"token", token.empty() ? Value() : Value(token)}};
}

Value current(const ApiRequest& request) {
    const bool hasCookie = request.session.kind != Session::Kind::Token;
    return who(request.session, hasCookie ? Gate::pageToken(Gate::cookie(request.head)) : "");
}

Value whoSchema() {
    return schema::object({{"kind", schema::word({"local", "paired", "token"})},
                           {"name", schema::text()},
                           {"scope", schema::word({"read", "make", "admin"})},
                           {"token", schema::orNull(schema::text())}});
}

Value listSchema() {
    return schema::object({{"sessions", schema::list(schema::object({{"id", schema::text()},
                                                                     {"kind", schema::text()},
                                                                     {"name", schema::text()},
                                                                     {"created", schema::time()},
                                                                     {"seen", schema::time()},
                                                                     {"isCurrent", schema::boolean()}}))}});
}

std::string cookieLine(const RequestHead& head, const std::string& secret, bool isSecure) {
    const int64_t seconds = secret.empty() ? 0 : SessionStore::kUnusedMs / 1000;
    return Gate::cookieName(head) + "=" + secret +
           "; Path=/; HttpOnly; SameSite=Strict; Max-Age=" + std::to_string(seconds) +
           (isSecure ? "; Secure" : "");
}

/// What a device says it is, for the list of those that were let in.
std::string deviceName(const RequestHead& head) {
    const std::string agent = head.header("User-Agent");
    for (const char* known : {"iPhone", "iPad", "Android", "Windows", "Macintosh", "Linux"})
        if (agent.find(known) != std::string::npos) return known;
    return {};
}

}  // namespace

SessionsApi::SessionsApi(const Parts& parts, const Origins& origins, StartKey& key, Pairing* pairing)
    : sessions_(parts.sessions),
      mostDevices_(parts.settings.limits.devices),
      origins_(origins),
      key_(key),
      pairing_(pairing),
      tries_(parts.settings.limits.tries, kMinute),
      triesOfAll_(parts.settings.limits.codeTries, kMinute) {}

std::vector<Route> SessionsApi::routes() {
    const Value entry = schema::object({{"key?", schema::text(200)}, {"code?", schema::text(20)}});
    return {
        {.method = "POST",
         .pattern = "/api/v1/sessions",
         .access = Access::Public,
         .body = Body::json(entry, 1 << 10),
         .summary = "Begins a session with the start key, at this machine, or with the pairing code",
         .results = {{201, "application/json", whoSchema()}},
         .handle = [this](ApiRequest& request, Responder& responder) { begin(request, responder); }},
        {.method = "GET",
         .pattern = "/api/v1/sessions/current",
         .summary = "Who asks, and the token that changes need",
         .results = {{200, "application/json", whoSchema()}},
         .handle = [](ApiRequest& request,
                      Responder& responder) { responder.answer(json(200, current(request))); }},
        {.method = "DELETE",
         .pattern = "/api/v1/sessions/current",
         .summary = "Forgets this browser",
         .results = {{204, "", {}}},
         .handle = [this](ApiRequest& request, Responder& responder) { responder.answer(forget(request)); }},
        {.method = "GET",
         .pattern = "/api/v1/sessions",
         .access = Access::Admin,
         .summary = "Everybody who is known",
         .results = {{200, "application/json", listSchema()}},
         .handle = [this](ApiRequest& request,
                          Responder& responder) { responder.answer(json(200, list(request))); }},
        {.method = "DELETE",
         .pattern = "/api/v1/sessions/{id}",
         .access = Access::Admin,
         .summary = "Lets a device or a program in no more",
         .results = {{204, "", {}}},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 const std::string session = request.id();
                 if (!sessions_.revoke(session)) throw notFound("session");
                 if (onRevoked_) onRevoked_(session);
                 responder.answer(Answer(204));
             }},
    };
}

Answer SessionsApi::forget(const ApiRequest& request) {
    if (request.session.kind == Session::Kind::Token)
        throw Problem(403, "not-a-browser", "tokens are removed by multiscene studio token");
    sessions_.forget(Gate::cookie(request.head));
    return Answer(204).with("Set-Cookie", cookieLine(request.head, "", origins_.isSecure(request.head)));
}

void SessionsApi::begin(ApiRequest& request, Responder& responder) {
    const Session session = admit(request);
    tries_.forgive(request.head.peer);
    const std::string secret = sessions_.addSecret(session);
    responder.answer(
        json(201, who(session, Gate::pageToken(secret)))
            .with("Set-Cookie", cookieLine(request.head, secret, origins_.isSecure(request.head))));
}

Session SessionsApi::admit(const ApiRequest& request) {
    const bool hasKey = request.body.has("key"), hasCode = request.body.has("code");
    if (hasKey == hasCode) throw Problem(400, "wrong-body", "either a key or a code is needed");
    if (!tries_.take(request.head.peer) || (hasCode && !triesOfAll_.take(""))) {
        Problem problem(429, "too-many-tries", "too many tries: wait a minute");
        problem.retryAfter = static_cast<int>(kMinute.count());
        throw problem;
    }
    if (hasCode) return admitPaired(request, request.body.string("code"));
    if (!isLoopback(request.head.peer) || !key_.take(request.body.string("key")))
        throw Problem(401, "wrong-key", "the key is not the one that the program shows now");
    return sessions_.local();
}

Session SessionsApi::admitPaired(const ApiRequest& request, const std::string& code) {
    if (!pairing_ || !pairing_->take(code))
        throw Problem(401, "wrong-code", "the code is not the one that the studio shows now");
    const auto isDevice = [](const SessionStore::Known& each) {
        return each.session.kind == Session::Kind::Paired;
    };
    if (static_cast<uint64_t>(std::ranges::count_if(sessions_.known(), isDevice)) >= mostDevices_)
        throw Problem(429, "too-many", "too many devices were let in: remove one first");
    return sessions_.addPaired(deviceName(request.head));
}

Value SessionsApi::list(const ApiRequest& request) {
    Value::Array all;
    for (const SessionStore::Known& each : sessions_.known())
        all.push_back(Value::Dictionary{{"id", each.session.id},
                                        {"kind", wordOf(each.session.kind)},
                                        {"name", each.session.name},
                                        {"created", timeText(each.created)},
                                        {"seen", timeText(each.seen)},
                                        {"isCurrent", each.session.id == request.session.id}});
    return Value::Dictionary{{"sessions", std::move(all)}};
}

}  // namespace multiscene::studio
