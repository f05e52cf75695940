#include "studio/templates/TemplatesApi.h"

#include <algorithm>
#include <charconv>

#include "platform/base/Json.h"
#include "studio/process/ChildProblem.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Answer;

namespace {

constexpr std::chrono::seconds kMostSeconds{120};
constexpr size_t kMostFindings = 100;

Value cardSchema() {
    return schema::object({{"id", schema::integer()},
                           {"name", schema::text()},
                           {"title", schema::text()},
                           {"seconds", schema::number()},
                           {"frames", schema::integer()},
                           {"framesPerSecond", schema::integer()},
                           {"width", schema::integer()},
                           {"height", schema::integer()},
                           {"photos", schema::integer()},
                           {"videos", schema::integer()},
                           {"state", schema::word({"installed", "sample", "offered"})},
                           {"isNew", schema::boolean()},
                           {"newerOffered", schema::boolean()},
                           {"needsNewerVersion", schema::boolean()},
                           {"megabytes", schema::number()},
                           {"thumbnail", schema::orNull(schema::address())},
                           {"preview", schema::orNull(schema::address())}});
}

Value inputSchema() {
    return schema::object({{"key", schema::text()},
                           {"kind", schema::word({"text", "photo", "video"})},
                           {"label", schema::text()},
                           {"maxCharacters?", schema::integer()},
                           {"maxLines?", schema::integer()},
                           {"threeDimensional?", schema::boolean()},
                           {"aspectWidth?", schema::integer()},
                           {"aspectHeight?", schema::integer()}});
}

Value findingSchema() {
    return schema::object({{"severity", schema::text()},
                           {"message", schema::text()},
                           {"file", schema::text()},
                           {"key", schema::text()}});
}

Value detailSchema() {
    return schema::extended(cardSchema(), {{"inputs", schema::list(inputSchema())},
                                           {"sampleValues", schema::orNull(schema::map(schema::text()))},
                                           {"findings", schema::list(findingSchema())},
                                           {"music", schema::boolean()}});
}

/// Of what was told, what is a number, a text, true or false, is so whatever was told.
Value card(const BookedTemplate& booked, const std::string& language) {
    const Value& told = booked.told;
    const std::string base = "/api/v1/templates/" + std::to_string(booked.id);
    const auto url = [&](bool isThere, const char* end) { return isThere ? Value(base + end) : Value(); };
    return Value::Dictionary{{"id", booked.id},
                             {"name", booked.name()},
                             {"title", booked.title(language)},
                             {"seconds", told["seconds"].doubleValue()},
                             {"frames", told.integer("frames")},
                             {"framesPerSecond", told.integer("framesPerSecond")},
                             {"width", told.integer("width")},
                             {"height", told.integer("height")},
                             {"photos", told.integer("photos")},
                             {"videos", told.integer("videos")},
                             {"state", booked.state()},
                             {"isNew", told.boolean("new")},
                             {"newerOffered", told.boolean("newerOffered")},
                             {"needsNewerVersion", told.boolean("needsNewerVersion")},
                             {"megabytes", told["megabytes"].doubleValue()},
                             {"thumbnail", url(TemplateMedia::hasPicture(booked), "/thumbnail")},
                             {"preview", url(TemplateMedia::hasVideo(booked), "/preview.mp4")}};
}

Value input(const Value& told, const std::string& language) {
    Value::Dictionary fields{{"key", told.string("key")},
                             {"kind", told.string("kind")},
                             {"label", told["placeholders"].string(language)}};
    for (const char* number : {"maxCharacters", "maxLines", "aspectWidth", "aspectHeight"})
        if (told.has(number)) fields[number] = told.integer(number);
    if (told.has("threeDimensional")) fields["threeDimensional"] = told.boolean("threeDimensional");
    return fields;
}

Value sampleValues(const Value& told) {
    if (!told["sampleTexts"].isDictionary()) return {};
    Value::Dictionary texts;
    for (const auto& [key, text] : told["sampleTexts"].dictionary()) texts[key] = text.stringValue();
    return texts;
}

/// The file without the folder, which is this machine's business.
Value finding(const Value& told, const std::string& folder) {
    std::string file = told.string("file");
    if (file.starts_with(folder + "/")) file = file.substr(folder.size() + 1);
    return Value::Dictionary{{"severity", told.string("severity")},
                             {"message", told.string("message")},
                             {"file", file},
                             {"key", told.string("key")}};
}

Value details(const BookedTemplate& booked, const std::string& language, const Value::Array& findings) {
    Value::Array inputs;
    for (const Value& told : booked.told.array("inputs")) inputs.push_back(input(told, language));
    return card(booked, language)
        .with("inputs", std::move(inputs))
        .with("sampleValues", sampleValues(booked.told))
        .with("findings", findings)
        .with("music", booked.told.boolean("music"));
}

std::string folded(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// In any of its names.
bool isFound(const BookedTemplate& booked, const std::string& search) {
    if (folded(booked.name()).find(search) != std::string::npos) return true;
    const auto& titles = booked.told["titles"].dictionary();
    return std::any_of(titles.begin(), titles.end(), [&](const auto& title) {
        return folded(title.second.stringValue()).find(search) != std::string::npos;
    });
}

}  // namespace

TemplatesApi::TemplatesApi(const Parts& parts, std::shared_ptr<TemplateBook> book)
    : parts_(parts), book_(std::move(book)), media_(parts) {}

std::vector<Route> TemplatesApi::routes() {
    const Value list = schema::object({{"templates", schema::list(cardSchema())}});
    return {
        {.method = "GET",
         .pattern = "/api/v1/templates",
         .summary = "Every template that is installed, ships with the program, or is offered",
         .query = {{"search", "a part of a name, in any language"},
                   {"state", "installed, sample or offered"}},
         .results = {{200, "application/json", list}},
         .handle = whenRead(
             [this](const ApiRequest& request, const Waiting& waiting) { waiting->answer(cards(request)); })},
        {.method = "GET",
         .pattern = "/api/v1/templates/{id}",
         .summary = "A template with its inputs, and what is wrong with it",
         .results = {{200, "application/json", detailSchema()}},
         .handle = whenRead(
             [this](const ApiRequest& request, const Waiting& waiting) { detail(request, waiting); })},
        {.method = "GET",
         .pattern = "/api/v1/templates/{id}/thumbnail",
         .summary = "Its picture",
         .results = {{200, "image/jpeg", {}}},
         .handle = whenRead([this](const ApiRequest& request, const Waiting& waiting) {
             media_.picture(wanted(request), waiting);
         })},
        {.method = "GET",
         .pattern = "/api/v1/templates/{id}/preview.mp4",
         .summary = "A video of it: its own, else the server's, else a small one of its sample inputs, which "
                    "may take a while",
         .results = {{200, "video/mp4", {}}},
         .handle = whenRead([this](const ApiRequest& request, const Waiting& waiting) {
             media_.video(wanted(request), waiting);
         })},
        {.method = "DELETE",
         .pattern = "/api/v1/templates/{id}",
         .access = Access::Admin,
         .summary = "Removes an installed template",
         .results = {{204, "", {}}},
         .handle = [this](ApiRequest& request, Responder& responder) { remove(request, responder); }},
    };
}

std::function<void(ApiRequest&, platform::http::Responder&)> TemplatesApi::whenRead(Answering answer) {
    return [this, answer = std::move(answer)](ApiRequest& request, Responder& responder) {
        const auto kept = std::make_shared<ApiRequest>(std::move(request));
        const auto waiting = std::make_shared<Responder>(std::move(responder));
        book_->refresh(
            [kept, waiting, answer] {
                try {
                    answer(*kept, waiting);
                } catch (...) {
                    waiting->answer(answerOf(currentProblem()));
                }
            },
            [waiting](const Problem& problem) { waiting->answer(answerOf(problem)); });
    };
}

const BookedTemplate& TemplatesApi::wanted(const ApiRequest& request) const {
    const std::string& text = request.id();
    int64_t id = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), id);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    const BookedTemplate* found = isNumber ? book_->find(id) : nullptr;
    if (!found) throw notFound("template");
    return *found;
}

Answer TemplatesApi::cards(const ApiRequest& request) const {
    const std::string search = folded(request.head.parameter("search").value_or(""));
    const std::string state = request.head.parameter("state").value_or("");
    Value::Array all;
    for (const BookedTemplate& each : book_->all())
        if ((state.empty() || state == each.state()) && isFound(each, search))
            all.push_back(card(each, request.language));
    return json(200, Value::Dictionary{{"templates", std::move(all)}});
}

/// What is wrong with a template is looked for when somebody looks at it.
void TemplatesApi::detail(const ApiRequest& request, const Waiting& waiting) {
    const BookedTemplate booked = wanted(request);
    const std::string folder = booked.folder.string(), language = request.language;
    const auto known = judged_.find(folder);
    if (folder.empty()) return waiting->answer(json(200, details(booked, language, {})));
    if (known != judged_.end() && known->second.told == booked.told)
        return waiting->answer(json(200, details(booked, language, known->second.findings)));
    auto& waits = beingJudged_[platform::jsonText(booked.told)];
    waits.push_back([waiting, booked, language](const Value::Array& findings) {
        waiting->answer(json(200, details(booked, language, findings)));
    });
    if (waits.size() == 1) check(booked);
}

void TemplatesApi::check(const BookedTemplate& booked) {
    const std::string folder = booked.folder.string();
    const auto findings = std::make_shared<Value::Array>();
    run(
        {"check", folder},
        [findings, folder](const Value& line) {
            if (line.string("event") == "finding" && findings->size() < kMostFindings)
                findings->push_back(finding(line, folder));
        },
        [this, told = booked.told, findings, folder](const ChildProgram::End& end) {
            constexpr int faulty = static_cast<int>(platform::ErrorKind::Template);
            if (end.exitCode == 0 || end.exitCode == faulty) judged_[folder] = {told, *findings};
            const auto waits = beingJudged_.extract(platform::jsonText(told));
            for (const auto& tell : waits.mapped()) tell(*findings);
        });
}

void TemplatesApi::remove(ApiRequest& request, Responder& responder) {
    const BookedTemplate& booked = wanted(request);
    if (!booked.told.boolean("installed"))
        throw Problem(409, "not-installed", "only installed templates can be removed");
    const auto waiting = std::make_shared<Responder>(std::move(responder));
    run({"templates", "remove", booked.name()}, {}, [this, waiting](const ChildProgram::End& end) {
        book_->forget();
        waiting->answer(end.exitCode == 0 ? Answer(204) : answerOf(problemOf(end)));
    });
}

void TemplatesApi::run(std::vector<std::string> words, ChildProgram::Line line, ChildProgram::Ended ended) {
    if (isStopped_) throw Problem(503, "not-serving", "the studio is ending");
    ChildProgram::Spec spec = programRun(parts_.settings, std::move(words));
    spec.most = kMostSeconds;
    const auto place = runs_.emplace(runs_.end());
    *place = std::make_unique<ChildProgram>(
        parts_.queue, std::move(spec), line ? std::move(line) : [](const Value&) {},
        [this, place, ended = std::move(ended)](const ChildProgram::End& end) {
            const auto over = std::move(*place);
            runs_.erase(place);
            ended(end);
        });
}

void TemplatesApi::stop() {
    isStopped_ = true;
    book_->stop();
    media_.stop();
    for (const auto& each : runs_) each->cancel();
}

}  // namespace multiscene::studio
