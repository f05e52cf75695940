// What a request says before its body.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::http {

struct Field {
    std::string name, value;
};

/// Everything in it was checked: see readTarget() for the path and RequestReader for the rest.
struct RequestHead {
    std::string method;             ///< GET, HEAD, POST, PUT, PATCH or DELETE
    std::string target;             ///< path and query as they were sent
    std::vector<std::string> path;  ///< decoded; "/" has none, and a "/" at the end makes an empty last one
    std::vector<Field> query;       ///< decoded, in the order sent
    std::vector<Field> fields;      ///< the header lines in the order sent
    std::string host;               ///< as sent, with its port

    std::optional<uint64_t> contentLength;
    bool isChunked = false;
    bool keepsAlive = false;
    bool expectsContinue = false;

    std::string peer;  ///< the address that the request comes from, without its port
    bool isSecure = false;

    bool hasBody() const { return isChunked || contentLength.value_or(0) > 0; }
    /// A header line's value whatever the case of its name; of several, joined by ", ". Empty: none.
    std::string header(std::string_view name) const;
    /// The first of the query's values of that name.
    std::optional<std::string> parameter(std::string_view name) const;
};

/// Whether two texts of ASCII are the same but for the case of letters.
bool sameToken(std::string_view one, std::string_view other);

}  // namespace platform::http
