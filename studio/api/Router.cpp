#include "studio/api/Router.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/base/Json.h"
#include "platform/base/Log.h"
#include "studio/api/Language.h"

namespace multiscene::studio {

using platform::http::Answer;
using platform::http::BodyInFile;
using platform::http::BodyInMemory;
using platform::http::Expectation;
using platform::http::NoBody;
using platform::http::Request;
using platform::http::RequestHead;
using platform::http::Responder;

namespace {

constexpr const char* kJson = "application/json";
constexpr int kRetrySeconds = 5;

bool isApi(const RequestHead& head) { return !head.path.empty() && head.path.front() == "api"; }

/// A name that is misspelt and passed over would be a setting that nobody gets.
void checkQuery(const RequestHead& head, const Route& route) {
    if (!isApi(head)) return;
    for (const auto& each : head.query) {
        const bool isKnown = each.name == "lang" ||
                             std::any_of(route.query.begin(), route.query.end(),
                                         [&](const Parameter& known) { return known.name == each.name; });
        if (!isKnown)
            throw Problem(400, "unknown-parameter", "\"" + each.name + "\" in the query is not known");
    }
}

/// Forms of other pages can say many things, but not this.
void checkContentType(const RequestHead& head) {
    std::string type = head.header("Content-Type");
    type = type.substr(0, type.find(';'));
    while (type.ends_with(' ')) type.pop_back();
    if (!platform::http::sameToken(type, kJson))
        throw Problem(415, "not-json", "the body should be application/json");
}

platform::Value bodyOf(const std::string& text, const platform::Value& schema) {
    platform::Value body;
    try {
        body = platform::parseJson(text, "", platform::ErrorKind::Usage);
    } catch (const platform::Error& error) {
        Problem problem(400, "not-json", "the body is " + error.message());
        problem.errors.push_back({"", "", error.message()});
        throw problem;
    }
    Problem problem(400, "wrong-body", "the body is not as it should be");
    problem.errors = schema::faultsIn(body, schema);
    if (problem.errors.empty()) return body;
    problem.detail = problem.errors.front().pointer + " " + problem.errors.front().message;
    throw problem;
}

Problem notServing() {
    Problem problem(503, "not-serving", "the studio is starting or ending");
    problem.retryAfter = kRetrySeconds;
    return problem;
}

std::string codeOf(int status) {
    switch (status) {
        case 403:
            return "foreign-host";
        case 405:
            return "method";
        case 411:
            return "no-length";
        case 413:
            return "too-large";
        case 414:
        case 431:
            return "head-too-large";
        case 503:
            return "busy";
        default:
            return status < 500 ? "bad-request" : "failed";
    }
}

}  // namespace

void Router::add(std::vector<Route> routes) {
    for (Route& route : routes) {
        patterns_.emplace_back(route.pattern);
        routes_.push_back(std::move(route));
    }
}

Router::Found Router::find(const RequestHead& head) const {
    if (!isOpen_) throw notServing();
    const std::string method = head.method == "HEAD" ? "GET" : head.method;
    Found best;
    std::vector<std::string> others;
    size_t bestValues = 0;
    for (size_t index = 0; index < routes_.size(); ++index) {
        auto values = patterns_[index].match(head.path);
        if (!values) continue;
        if (routes_[index].method != method) {
            others.push_back(routes_[index].method);
            continue;
        }
        if (best.route && bestValues <= patterns_[index].values()) continue;
        bestValues = patterns_[index].values();
        best = {&routes_[index], std::move(*values)};
    }
    if (best.route) return best;
    if (others.empty()) throw notFound(isApi(head) ? "place in the API" : "page");
    Problem problem(405, "method", head.method + " is not for this place");
    problem.methods = std::move(others);
    throw problem;
}

Session Router::judge(const RequestHead& head, const Route& route) const {
    const Session session = gate_.judge(head, route.access);
    checkQuery(head, route);
    return session;
}

Expectation Router::expect(const RequestHead& head) {
    try {
        const Found found = find(head);
        const Session session = judge(head, *found.route);
        const Body& body = found.route->body;
        switch (body.kind) {
            case Body::Kind::Json:
                checkContentType(head);
                return BodyInMemory{body.mostBytes > 0 ? body.mostBytes : bodyBytes_};
            case Body::Kind::File:
                return BodyInFile{
                    body.target(session),
                    body.mostOf ? std::min(body.mostBytes, body.mostOf(found.values)) : body.mostBytes};
            case Body::Kind::None:
                break;
        }
        return NoBody{};
    } catch (...) {
        return answerOf(currentProblem());
    }
}

void Router::handle(Request request, Responder responder) {
    struct Work {
        const Route* route;
        ApiRequest request;
        std::string body;
        Responder responder;
    };
    std::shared_ptr<Work> work;
    try {
        Found found = find(request.head);
        Session session = judge(request.head, *found.route);
        std::string language = languageOf(request.head);
        work = std::make_shared<Work>(Work{found.route,
                                           {std::move(request.head),
                                            std::move(found.values),
                                            {},
                                            std::move(request.file),
                                            request.bodyBytes,
                                            std::move(session),
                                            std::move(language)},
                                           std::move(request.body),
                                           std::move(responder)});
    } catch (...) {
        return responder.answer(answerOf(currentProblem()));
    }
    queue_.async([this, work] { run(*work->route, work->request, work->body, work->responder); });
}

void Router::run(const Route& route, ApiRequest& request, const std::string& body,
                 Responder& responder) const {
    std::optional<Problem> problem;
    try {
        if (!isOpen_) throw notServing();
        if (route.body.kind == Body::Kind::Json) request.body = bodyOf(body, route.body.schema);
        route.handle(request, responder);
        return;
    } catch (...) {
        problem = currentProblem();
    }
    if (problem->status >= 500) platform::log::info("studio: " + route.pattern + ": " + problem->detail);
    // One that was taken away is somebody else's to answer.
    if (responder) responder.answer(answerOf(*problem));
}

Answer Router::finish(const RequestHead& head, Answer answer) {
    reason_ = problemCode(answer);
    return inLanguage(std::move(answer), languageOf(head));
}

void Router::answered(const RequestHead& head, int status, uint64_t bytes, std::chrono::microseconds took) {
    if (!isOpen_ || !answered_) return;
    const Route* route = nullptr;
    try {
        route = find(head).route;
    } catch (const Problem&) {  // of no route
    }
    queue_.async([this, told = Answered{head.method, route ? route->pattern : "", status, bytes, took,
                                        std::exchange(reason_, {})}] { answered_(told); });
}

Answer Router::refusal(int status, const std::string& reason) {
    if (status >= 500 && !isOpen_) return answerOf(notServing());
    return answerOf(Problem(status, codeOf(status), reason));
}

}  // namespace multiscene::studio
