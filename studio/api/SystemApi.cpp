#include "studio/api/SystemApi.h"

#include <algorithm>

#include "app/program/ProgramVersion.h"
#include "platform/fence/Sandbox.h"
#include "platform/qr/QrCode.h"
#include "studio/api/OpenApi.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Answer;
using platform::http::Responder;

namespace {

constexpr const char* kUsageSharing = "usageSharing";

/// What keeps the runs of the program from harming this machine.
std::string fenceOf(const StudioSettings& settings) {
    const auto& options = settings.programOptions;
    const bool isOpen = std::find(options.begin(), options.end(), "--no-fence") != options.end();
    return isOpen ? "none" : platform::sandboxHere().word();
}

Value count(uint64_t number) { return static_cast<int64_t>(number); }

Value state(const char* word) { return Value::Dictionary{{"status", word}, {"version", programVersion()}}; }

Value stateSchema() { return schema::object({{"status", schema::text()}, {"version", schema::text()}}); }

Value settingsSchema() {
    return schema::object(
        {{"version", schema::text()},
         {"language", schema::text()},
         {"languages", schema::list(schema::text())},
         {"isSecure", schema::boolean()},
         {"isLocal", schema::boolean()},
         {"timelineShare", schema::boolean()},
         {"limits", schema::object({{"photoBytes", schema::integer()},
                                    {"videoBytes", schema::integer()},
                                    {"soundBytes", schema::integer()},
                                    {"queue", schema::integer()}})},
         {"fence", schema::word({"full", "partial", "none"})},
         {"pairing", schema::orNull(schema::object(
                         {{"code", schema::text()}, {"url", schema::text()}, {"qr", schema::address()}}))},
         {"ratingAsked", schema::boolean()},
         {"usageSharing", schema::boolean()}});
}

}  // namespace

SystemApi::SystemApi(const Parts& parts, const Router& router, const Origins& origins, const Pairing* pairing,
                     std::function<std::string()> pairingUrl, std::function<bool()> isSharing)
    : parts_(parts),
      router_(router),
      origins_(origins),
      pairing_(pairing),
      pairingUrl_(std::move(pairingUrl)),
      isSharing_(std::move(isSharing)),
      fence_(fenceOf(parts.settings)) {}

std::vector<Route> SystemApi::routes() {
    std::vector<Route> all = stateRoutes();
    for (Route& route : settingsRoutes()) all.push_back(std::move(route));
    return all;
}

std::vector<Route> SystemApi::stateRoutes() {
    return {
        {.method = "GET",
         .pattern = "/healthz",
         .access = Access::Public,
         .summary = "Answers while the studio runs",
         .results = {{200, "application/json", stateSchema()}},
         .handle = [](ApiRequest&, Responder& responder) { responder.answer(json(200, state("alive"))); }},
        {.method = "GET",
         .pattern = "/readyz",
         .access = Access::Public,
         .summary = "Answers well when the studio can work: its database answers",
         .results = {{200, "application/json", stateSchema()}},
         .handle =
             [this](ApiRequest&, Responder& responder) {
                 parts_.database.prepare("SELECT count(*) FROM session").step();
                 responder.answer(json(200, state("ready")));
             }},
        {.method = "GET",
         .pattern = "/api/v1/openapi.json",
         .access = Access::Public,
         .summary = "This description",
         .results = {{200, "application/json", schema::anything()}},
         .handle = [this](ApiRequest&,
                          Responder& responder) { responder.answer(json(200, openApi(router_.routes()))); }},
    };
}

std::vector<Route> SystemApi::settingsRoutes() {
    return {
        {.method = "GET",
         .pattern = "/api/v1/settings",
         .summary = "What a page has to know of the studio",
         .results = {{200, "application/json", settingsSchema()}},
         .handle = [this](ApiRequest& request,
                          Responder& responder) { responder.answer(json(200, settings(request))); }},
        {.method = "PATCH",
         .pattern = "/api/v1/settings",
         .access = Access::Admin,
         .body = Body::json(schema::object({{kUsageSharing, schema::boolean()}}), 1 << 10),
         .summary = "Changes what may be changed",
         .results = {{200, "application/json", settingsSchema()}},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 parts_.sessions.setSetting(kUsageSharing, request.body.boolean(kUsageSharing));
                 responder.answer(json(200, settings(request)));
             }},
        {.method = "PUT",
         .pattern = "/api/v1/rating",
         .access = Access::Make,
         .body = Body::json(schema::object({{"answer", schema::word({"love", "fine", "poor"})}}), 1 << 10),
         .summary = "How somebody likes it; they are not asked again",
         .results = {{204, "", {}}},
         .handle =
             [this](ApiRequest& request, Responder& responder) {
                 parts_.sessions.setRating(request.session, request.body.string("answer"));
                 responder.answer(Answer(204));
             }},
        {.method = "GET",
         .pattern = "/api/v1/pairing.svg",
         .access = Access::Admin,
         .summary = "The address with the pairing code, for a camera; at this machine alone",
         .query = {{"v", "Tells codes apart for who keeps pictures"}},
         .results = {{200, "image/svg+xml", {}}},
         .handle = [this](ApiRequest& request,
                          Responder& responder) { responder.answer(pairingPicture(request)); }},
    };
}

Answer SystemApi::pairingPicture(const ApiRequest& request) const {
    if (pairing(request).isNone()) throw notFound("pairing");
    return Answer::text(200, platform::QrCode(pairingUrl_()).svg(), "image/svg+xml")
        .with("Content-Security-Policy", "default-src 'none'");
}

Value SystemApi::settings(const ApiRequest& request) const {
    const StudioLimits& limits = parts_.settings.limits;
    return Value::Dictionary{{"version", programVersion()},
                             {"language", request.language},
                             {"languages", Value::Array{"en", "zh", "ja"}},
                             {"isSecure", origins_.isSecure(request.head)},
                             {"isLocal", request.session.kind == Session::Kind::Local},
                             {"timelineShare", isSharing_()},
                             {"limits", Value::Dictionary{{"photoBytes", count(limits.photoBytes)},
                                                          {"videoBytes", count(limits.videoBytes)},
                                                          {"soundBytes", count(limits.soundBytes)},
                                                          {"queue", count(limits.jobs)}}},
                             {"fence", fence_},
                             {"pairing", pairing(request)},
                             {"ratingAsked", !parts_.sessions.rating(request.session).empty()},
                             {kUsageSharing, parts_.sessions.setting(kUsageSharing)}};
}

/// Who is let in by the code shall not let in others.
Value SystemApi::pairing(const ApiRequest& request) const {
    if (!pairing_ || request.session.kind != Session::Kind::Local) return {};
    return Value::Dictionary{{"code", pairing_->code()},
                             {"url", pairingUrl_()},
                             {"qr", "/api/v1/pairing.svg?v=" + pairing_->code()}};
}

}  // namespace multiscene::studio
