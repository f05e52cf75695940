#include "studio/api/Problem.h"

#include <algorithm>
#include <string_view>

#include "app/language/Strings.h"
#include "platform/base/CurrentError.h"
#include "platform/base/Json.h"
#include "platform/http/Status.h"

namespace multiscene::studio {

using platform::Error;
using platform::ErrorKind;
using platform::Value;
using platform::http::Answer;

namespace {

constexpr const char* kProblemType = "application/problem+json";
constexpr std::string_view kParticular[] = {"failed", "input-fault", "passing-fault", "template-fault",
                                            "too-long"};
constexpr int kSecondsUntilNextTry = 5;

struct KindRow {
    ErrorKind kind;
    int status;
    const char* code;
};
constexpr KindRow kKinds[] = {
    {ErrorKind::Usage, 400, "usage"},         {ErrorKind::Template, 422, "template-fault"},
    {ErrorKind::Input, 422, "input-fault"},   {ErrorKind::Transient, 503, "passing-fault"},
    {ErrorKind::Cancelled, 409, "cancelled"}, {ErrorKind::Failed, 500, "failed"},
};

const KindRow& rowOf(ErrorKind kind) {
    for (const KindRow& row : kKinds)
        if (row.kind == kind) return row;
    return std::end(kKinds)[-1];
}

Value entryValue(const ProblemEntry& entry) {
    Value::Dictionary fields{{"pointer", entry.pointer}, {"message", entry.message}};
    if (!entry.key.empty()) fields["key"] = entry.key;
    if (!entry.remedy.empty()) fields["remedy"] = entry.remedy;
    return fields;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

}  // namespace

// Where the fault lies is named by its key alone: a path of this machine tells a client nothing.
Problem::Problem(const Error& error)
    : Problem(rowOf(error.kind()).status, rowOf(error.kind()).code, error.message()) {
    if (error.kind() == ErrorKind::Transient) retryAfter = kSecondsUntilNextTry;
    if (!error.key().empty()) errors.push_back({"", error.key(), error.message()});
}

Value Problem::value() const {
    Value::Dictionary fields{
        {"type", "/problems/" + code},
        {"title", title.empty() ? std::string(platform::http::statusText(status)) : title},
        {"status", status},
        {"detail", detail},
        {"code", code}};
    Value::Array entries;
    for (const ProblemEntry& entry : errors) entries.push_back(entryValue(entry));
    if (!entries.empty()) fields["errors"] = std::move(entries);
    return fields;
}

Value inLanguage(const Value& problem, const std::string& language) {
    const std::string code = problem.string("code");
    const std::string title = localizedStringIn(language, "problem." + code);
    if (title.empty()) return problem;
    const Value titled = problem.with("title", title);
    if (language == "en") return titled;
    // What is wrong with just this is known in English alone.
    const bool isParticular =
        std::find(std::begin(kParticular), std::end(kParticular), code) != std::end(kParticular);
    return titled.with("detail", isParticular ? title + " (" + problem.string("detail") + ")" : title);
}

Answer inLanguage(Answer answer, const std::string& language) {
    if (answer.field("Content-Type") != kProblemType) return answer;
    const Value problem = platform::parseJson(answer.body(), "");
    Answer translated =
        Answer::text(answer.status(), platform::jsonText(inLanguage(problem, language)) + "\n", kProblemType);
    for (const auto& field : answer.fields())
        if (field.name != "Content-Type") translated.with(field.name, field.value);
    return translated.with("Content-Language", language);
}

std::string problemCode(const Answer& answer) {
    return answer.field("Content-Type") == kProblemType
               ? platform::parseJson(answer.body(), "").string("code")
               : std::string();
}

Problem notFound(const std::string& what) { return {404, "not-found", "there is no such " + what}; }

Answer answerOf(const Problem& problem) {
    Answer answer = Answer::text(problem.status, platform::jsonText(problem.value()) + "\n", kProblemType);
    if (problem.retryAfter) answer.with("Retry-After", std::to_string(*problem.retryAfter));
    if (!problem.methods.empty()) answer.with("Allow", joined(problem.methods));
    if (problem.status == 401) answer.with("WWW-Authenticate", "Bearer");
    return answer;
}

Problem currentProblem() {
    try {
        throw;
    } catch (const Problem& problem) {
        return problem;
    } catch (...) {
        return Problem(platform::currentError());
    }
}

Answer json(int status, const Value& body) {
    return Answer::text(status, platform::jsonText(body) + "\n", "application/json");
}

}  // namespace multiscene::studio
