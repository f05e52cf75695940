// What a resource of the API says of itself: its routes.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/PartFile.h"
#include "platform/base/Value.h"
#include "platform/http/Handler.h"
#include "studio/access/Session.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"

namespace multiscene::studio {

/// A request whose access and body were judged. Studio queue.
struct ApiRequest {
    platform::http::RequestHead head;
    std::map<std::string, std::string, std::less<>> path;  ///< "{id}" of the pattern: its value, by "id"
    platform::Value body;                                  ///< of a JSON body, as its schema says; else none
    std::unique_ptr<platform::PartFile> file;              ///< of an uploaded body; gone unless published
    uint64_t bodyBytes = 0;
    Session session;  ///< who asks; nobody's on a public route without credentials
    std::string
        language;  ///< "en", "zh", "ja": of the query's "lang", else of the cookie, else of the browser

    const std::string& id() const { return path.at("id"); }
};

/// Which body a route takes.
struct Body {
    enum class Kind { None, Json, File };

    static Body none() { return {}; }
    /// Larger ones are a 413 (0: than the studio's limit), what is not as the schema says a 400 with
    /// pointers.
    static Body json(platform::Value schema, uint64_t mostBytes = 0) {
        return {Kind::Json, mostBytes, std::move(schema), {}, {}};
    }
    /// Into a file that is gone unless the handler publishes it, and then called what `target` says for the
    /// request, in a folder that is there. Larger ones are a 413 before they are read.
    static Body file(std::function<std::filesystem::path(const Session&)> target, uint64_t mostBytes) {
        return {Kind::File, mostBytes, {}, std::move(target), {}};
    }

    Kind kind = Kind::None;
    uint64_t mostBytes = 0;
    platform::Value schema = {};
    /// Called on the server's thread; may throw Problem.
    std::function<std::filesystem::path(const Session&)> target = {};
    /// How large a file this request may send, by the values in its path, where not all may the same. As
    /// `target`.
    std::function<uint64_t(const std::map<std::string, std::string, std::less<>>&)> mostOf = {};
};

/// A value in the query that a route heeds. Others are refused.
struct Parameter {
    std::string name;
    std::string summary;
};

/// What a route may answer with when all is well; problems are understood.
struct Result {
    int status = 200;
    std::string contentType = "application/json";  ///< empty: no body
    platform::Value schema = {};                   ///< of JSON
};

struct Route {
    std::string method, pattern;  ///< "GET" (heeds HEAD, too), "/api/v1/jobs/{id}", "/frames/{n}.jpg"
    Access access = Access::Read;
    Body body = {};
    std::string summary;  ///< a line for the API's description
    std::vector<Parameter> query = {};
    std::vector<Result> results = {};
    /// Studio queue. May move the responder away and answer later; until then what it throws is answered as a
    /// problem.
    std::function<void(ApiRequest&, platform::http::Responder&)> handle;
};

/// A part of the API. Made, called and destroyed on the studio's queue or before that runs.
class Resource {
  public:
    virtual ~Resource() = default;
    virtual std::vector<Route> routes() = 0;
    /// Studio queue: ends what is under way; returns at once. No request follows.
    virtual void stop() {}
};

}  // namespace multiscene::studio
