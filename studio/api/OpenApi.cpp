#include "studio/api/OpenApi.h"

#include <algorithm>
#include <cctype>

#include "app/program/ProgramVersion.h"
#include "platform/http/Status.h"

namespace multiscene::studio {

using platform::Value;

namespace {

constexpr const char* kProblemType = "application/problem+json";

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

/// "get_jobs_id_events" of GET /api/v1/jobs/{id}/events.
std::string operationName(const Route& route) {
    constexpr std::string_view base = "/api/v1";
    std::string path = route.pattern.starts_with(base) ? route.pattern.substr(base.size()) : route.pattern;
    std::string name = lowerCase(route.method);
    for (const char c : path)
        if (std::isalnum(static_cast<unsigned char>(c)))
            name += c;
        else if (!name.ends_with('_'))
            name += '_';
    while (name.ends_with('_')) name.pop_back();
    return name;
}

Value content(const std::string& type, const Value& schema) {
    const bool isJson = type == "application/json" || type == kProblemType;
    return Value::Dictionary{
        {type,
         Value::Dictionary{{"schema", isJson ? schema : schema::text().with("contentMediaType", type)}}}};
}

Value parameter(const std::string& name, const char* place, const std::string& summary) {
    return Value::Dictionary{{"name", name},
                             {"in", place},
                             {"required", std::string_view(place) == "path"},
                             {"description", summary},
                             {"schema", schema::text()}};
}

Value parametersOf(const Route& route) {
    Value::Array all;
    for (size_t at = 0; (at = route.pattern.find('{', at)) != std::string::npos; ++at)
        all.push_back(
            parameter(route.pattern.substr(at + 1, route.pattern.find('}', at) - at - 1), "path", ""));
    for (const Parameter& each : route.query) all.push_back(parameter(each.name, "query", each.summary));
    return all;
}

Value responsesOf(const Route& route) {
    Value::Dictionary responses;
    for (const Result& result : route.results) {
        Value::Dictionary response{{"description", std::string(platform::http::statusText(result.status))}};
        if (!result.contentType.empty()) response["content"] = content(result.contentType, result.schema);
        responses[std::to_string(result.status)] = std::move(response);
    }
    responses["default"] = Value::Dictionary{{"$ref", "#/components/responses/Problem"}};
    return responses;
}

Value securityOf(const Route& route) {
    if (route.access == Access::Public) return Value::Array{};
    const bool changes = route.method != "GET";
    Value::Dictionary page{{"cookie", Value::Array{}}};
    if (changes) page["pageToken"] = Value::Array{};
    return Value::Array{page, Value::Dictionary{{"token", Value::Array{wordOf(route.access)}}}};
}

Value operationOf(const Route& route) {
    Value::Dictionary operation{{"operationId", operationName(route)},
                                {"summary", route.summary},
                                {"parameters", parametersOf(route)},
                                {"responses", responsesOf(route)},
                                {"security", securityOf(route)}};
    if (route.body.kind == Body::Kind::Json)
        operation["requestBody"] = Value::Dictionary{
            {"required", true}, {"content", content("application/json", route.body.schema)}};
    if (route.body.kind == Body::Kind::File)
        operation["requestBody"] =
            Value::Dictionary{{"required", true}, {"content", content("application/octet-stream", {})}};
    return operation;
}

Value componentsValue() {
    const auto scheme = [](const char* type, Value::Dictionary more) {
        more["type"] = type;
        return Value(std::move(more));
    };
    return Value::Dictionary{
        {"responses",
         Value::Dictionary{
             {"Problem", Value::Dictionary{{"description", "What went wrong (RFC 9457)"},
                                           {"content", content(kProblemType, schema::problem())}}}}},
        {"securitySchemes",
         Value::Dictionary{{"cookie", scheme("apiKey", {{"in", "cookie"}, {"name", "multiscene-PORT"}})},
                           {"pageToken", scheme("apiKey", {{"in", "header"}, {"name", "X-Studio-Token"}})},
                           {"token", scheme("http", {{"scheme", "bearer"}})}}}};
}

}  // namespace

Value openApi(const std::deque<Route>& routes) {
    std::map<std::string, Value::Dictionary> byPath;
    for (const Route& route : routes) byPath[route.pattern][lowerCase(route.method)] = operationOf(route);
    Value::Dictionary paths;
    for (auto& [path, operations] : byPath) paths.emplace(path, Value(std::move(operations)));
    return Value::Dictionary{
        {"openapi", "3.1.0"},
        {"info", Value::Dictionary{{"title", "multiscene studio"}, {"version", programVersion()}}},
        {"paths", std::move(paths)},
        {"components", componentsValue()}};
}

}  // namespace multiscene::studio
