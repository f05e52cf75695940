// What goes wrong with a request, as RFC 9457 says it.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/base/Value.h"
#include "platform/http/Answer.h"

namespace multiscene::studio {

/// One thing that is wrong with a body.
struct ProblemEntry {
    std::string pointer;  ///< RFC 6901: "/values/title"
    std::string key;      ///< of the template's input, where it is one
    std::string message;
    std::string remedy = {};
};

/// Thrown by handlers; answered as application/problem+json.
struct Problem : std::exception {
    Problem(int statusCode, std::string stableCode, std::string words)
        : status(statusCode), code(std::move(stableCode)), detail(std::move(words)) {}
    /// By the error's kind: 400, 422 "template-fault" or "input-fault", 503 with Retry-After, 409, else 500.
    explicit Problem(const platform::Error& error);

    const char* what() const noexcept override { return detail.c_str(); }
    /// type, title, status, detail, code, errors. What jobs keep as their "problem", too.
    platform::Value value() const;

    int status;
    std::string code;   ///< what programs go by: "text-too-long"
    std::string title;  ///< a short line for all of this code; empty: what the status means
    std::string detail;
    std::vector<ProblemEntry> errors;
    std::optional<int> retryAfter;     ///< seconds
    std::vector<std::string> methods;  ///< of a 405: what is allowed
};

/// 404 "not-found".
/// The code of the problem that an answer tells; empty: it tells none.
std::string problemCode(const platform::http::Answer& answer);
Problem notFound(const std::string& what);

platform::http::Answer answerOf(const Problem& problem);
/// A problem's answer with title and detail in "en", "zh" or "ja", as far as there are words for its code;
/// other answers as they are.
platform::http::Answer inLanguage(platform::http::Answer answer, const std::string& language);
/// The same for what Problem::value() gave.
platform::Value inLanguage(const platform::Value& problem, const std::string& language);
/// The problem behind the exception that is being handled.
Problem currentProblem();

/// An answer with a JSON body.
platform::http::Answer json(int status, const platform::Value& body);

}  // namespace multiscene::studio
