#include "studio/jobs/ChecksApi.h"

#include "app/job/UserText.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"
#include "studio/jobs/JobRequest.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Responder;

namespace {

constexpr std::chrono::seconds kMost{60};
constexpr size_t kMostFindings = 100;
constexpr double kMilli = 0.001;

Value resultSchema() {
    const Value finding = schema::object({{"severity", schema::text()},
                                          {"message", schema::text()},
                                          {"file", schema::text()},
                                          {"key", schema::text()}});
    return schema::object(
        {{"missing", schema::list(schema::object({{"key", schema::text()}, {"label", schema::text()}}))},
         {"findings", schema::list(finding)},
         {"fits", schema::map(schema::word({"fits", "smaller", "refused"}))},
         {"seconds", schema::number()},
         {"place", schema::integer()}});
}

bool isMissing(const Value& value) {
    return !value ||
           (value.isString() && value.stringValue().find_first_not_of(" \n\t") == std::string::npos);
}

Value missingOf(const TemplateFacts& facts, const Value& values) {
    Value::Array missing;
    for (const TemplateFacts::Input& input : facts.inputs)
        if (isMissing(values[input.key]))
            missing.push_back(Value::Dictionary{{"key", input.key}, {"label", input.label}});
    return missing;
}

const char* fitOf(const TemplateFacts::Input& input, const std::string& text) {
    try {
        const QVUserTextInputModel limits(
            Value::Dictionary{{"maxLenght", input.maxCharacters}, {"maxLine", input.maxLines}});
        return acceptText(text, input.key, &limits).scale < 1 ? "smaller" : "fits";
    } catch (const platform::Error&) {
        return "refused";
    }
}

Value fitsOf(const TemplateFacts& facts, const Value& values) {
    Value::Dictionary fits;
    for (const TemplateFacts::Input& input : facts.inputs)
        if (values[input.key].isString()) fits[input.key] = fitOf(input, values.string(input.key));
    return fits;
}

Value findingOf(const Value& line) {
    // The name alone: where it lies here tells a client nothing.
    const std::string file = line.string("file");
    return Value::Dictionary{{"severity", line.string("severity")},
                             {"message", line.string("message")},
                             {"file", file.substr(file.rfind('/') + 1)},
                             {"key", line.string("key")}};
}

}  // namespace

ChecksApi::ChecksApi(std::shared_ptr<Workshop> shop) : shop_(std::move(shop)) {
    shop_->queue.addListener([this](const Job& job, const Value&) {
        if (job.kind == JobKind::Install) known_.clear();
    });
}

std::vector<Route> ChecksApi::routes() {
    return {
        {.method = "POST",
         .pattern = "/api/v1/checks",
         .access = Access::Make,
         .body = Body::json(schema::object({{"template", schema::integer()},
                                            {"values?", request::valuesSchema(shop_->parts.settings.limits)},
                                            {"music?", schema::orNull(request::musicSchema())},
                                            {"size?", schema::orNull(request::sizeSchema())},
                                            {"draft?", schema::boolean()}})),
         .summary = "What would be missing or wrong, and how long it would take",
         .results = {{200, "application/json", resultSchema()}},
         .handle = [this](ApiRequest& request, Responder& responder) { check(request, responder); }}};
}

void ChecksApi::check(ApiRequest& request, Responder& responder) {
    const auto facts = shop_->findTemplate(request.body.integer("template"), request.language);
    if (!facts) throw Problem(422, "no-such-template", "there is no such template here");
    const int64_t milliseconds =
        shop_->queue.estimate(facts->id, facts->frames, request::pixelsOf(request.body, *facts));
    Value::Dictionary answer{{"missing", missingOf(*facts, request.body["values"])},
                             {"fits", fitsOf(*facts, request.body["values"])},
                             {"seconds", static_cast<double>(milliseconds) * kMilli},
                             {"place", shop_->queue.nextPlace(request.session.id)}};
    withFindings(*facts, [answer = std::move(answer), waiting = std::make_shared<Responder>(std::move(
                                                          responder))](const Findings& findings) mutable {
        answer["findings"] = findings;
        waiting->answer(json(200, answer));
    });
}

void ChecksApi::withFindings(const TemplateFacts& facts, std::function<void(const Findings&)> use) {
    if (const auto known = known_.find(facts.id); known != known_.end()) return use(known->second);
    if (facts.folder.empty()) return use({});
    const bool isAsked = children_.contains(facts.id);
    children_[facts.id].waiting.push_back(std::move(use));
    if (!isAsked) start(facts);
}

void ChecksApi::start(const TemplateFacts& facts) {
    ChildProgram::Spec spec = programRun(shop_->parts.settings, {"check", facts.folder});
    spec.most = kMost;
    Child& child = children_[facts.id];
    child.program = std::make_unique<ChildProgram>(
        shop_->parts.queue, std::move(spec),
        [&child](const Value& line) {
            if (line.string("event") == "finding" && child.findings.size() < kMostFindings)
                child.findings.push_back(findingOf(line));
        },
        [this, id = facts.id](const ChildProgram::End& end) {
            const Child ended = std::move(children_.extract(id).mapped());
            constexpr int faulty = static_cast<int>(platform::ErrorKind::Template);
            if (end.exitCode == 0 || end.exitCode == faulty) known_[id] = ended.findings;
            for (const auto& use : ended.waiting) use(ended.findings);
        });
}

}  // namespace multiscene::studio
