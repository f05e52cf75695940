#include "studio/workbench/WorkbenchApi.h"

#include <charconv>

#include "platform/base/File.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::Value;
using platform::http::Responder;

namespace {

constexpr int64_t kMostFrame = 1'000'000;
constexpr const char* kBase = "/api/v1/workbench";
const Parameter kState{"v", "Tells states of the template apart for who keeps pictures"};

Value stateSchema() {
    const Value finding = schema::object({{"severity", schema::word({"error", "warning"})},
                                          {"message", schema::text()},
                                          {"remedy", schema::text()},
                                          {"file", schema::text()},
                                          {"key", schema::text()},
                                          {"line", schema::integer()}});
    const Value video = schema::object({{"frames", schema::integer()},
                                        {"framesPerSecond", schema::integer()},
                                        {"width", schema::integer()},
                                        {"height", schema::integer()}});
    const Value problem =
        schema::object({{"message", schema::text()}, {"file", schema::text()}, {"key", schema::text()}});
    return schema::object({{"folder", schema::text()},
                           {"name", schema::text()},
                           {"revision", schema::integer()},
                           {"shown", schema::integer()},
                           {"video", schema::orNull(video)},
                           {"trials", schema::list(schema::text())},
                           {"moments", schema::map(schema::integer())},
                           {"problem", schema::orNull(problem)},
                           {"findings", schema::list(finding)},
                           {"checked", schema::integer()}});
}

int64_t frameOf(const std::string& text) {
    int64_t frame = -1;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), frame);
    if (failure != std::errc() || end != text.data() + text.size() || frame < 0 || frame > kMostFrame)
        throw Problem(400, "usage", "\"" + text + "\" is no number of a frame");
    return frame;
}

std::string parameterOf(const ApiRequest& request, const char* name) {
    return request.head.parameter(name).value_or("");
}

/// Whoever writes the template sits at this machine; for others there is none.
void requireLocal(const ApiRequest& request) {
    if (request.session.kind != Session::Kind::Local) throw notFound("workbench");
}

Route route(const std::string& path, const char* summary, const char* contentType, const Value& schema,
            std::vector<Parameter> query, std::function<void(ApiRequest&, Responder&)> handle) {
    return {.method = "GET",
            .pattern = kBase + path,
            .access = Access::Make,
            .summary = summary,
            .query = std::move(query),
            .results = {{200, contentType, schema}},
            .handle = [handle = std::move(handle)](ApiRequest& request, Responder& responder) {
                requireLocal(request);
                handle(request, responder);
            }};
}

Route withOvertaken(Route route) {
    route.results.push_back({204, "", {}});
    return route;
}

}  // namespace

std::vector<Route> WorkbenchApi::routes() {
    return {
        route("", "The template on the workbench: what is shown, and what is wrong", "application/json",
              stateSchema(), {},
              [this](ApiRequest&, Responder& responder) { responder.answer(json(200, bench_.state())); }),
        route("/events", "Events \"saved\" {revision}, \"state\" (all of it), \"outline\" {revision}",
              "text/event-stream", {}, {},
              [this](ApiRequest&, Responder& responder) { bench_.listen(responder.stream()); }),
        route("/outline", "Its scenes, their nodes, when they are seen and when they move",
              "application/json", schema::anything(), {kState},
              [this](ApiRequest&, Responder& responder) { responder.answer(bench_.outline()); }),
        withOvertaken(route("/frames/{n}.jpg",
                            "A frame; its number is in X-Frame. 204 when another one was asked for meanwhile",
                            "image/jpeg", {}, {{"trial", "The trial whose inputs it shows"}, kState},
                            [this](ApiRequest& request, Responder& responder) {
                                const int64_t frame = frameOf(request.path.at("n"));
                                bench_.still(frame, parameterOf(request, "trial"), std::move(responder));
                            })),
        withOvertaken(route("/frames/{n}.json", "The nodes of a frame with their values, as trace prints it",
                            "application/json", schema::anything(), {kState},
                            [this](ApiRequest& request, Responder& responder) {
                                bench_.values(frameOf(request.path.at("n")), std::move(responder));
                            })),
        withOvertaken(route("/trials/{name}.jpg", "A frame with the inputs of a trial, in small",
                            "image/jpeg", {}, {{"frame", "Its number"}, kState},
                            [this](ApiRequest& request, Responder& responder) {
                                const int64_t frame = frameOf(parameterOf(request, "frame"));
                                bench_.trial(request.path.at("name"), frame, std::move(responder));
                            })),
    };
}

fs::path workbenchFolder(const std::string& name) {
    if (!platform::isFolder(name))
        throw Error(ErrorKind::Usage, "there is no folder of this name", name, "DIR");
    const fs::path folder = (fs::absolute(name) / "").lexically_normal().parent_path();
    const fs::path file = folder / (folder.filename().string() + ".plist");
    if (!platform::isFile(file))
        throw Error(ErrorKind::Template, "is no template: there is no such file", file.string());
    return folder;
}

}  // namespace multiscene::studio
