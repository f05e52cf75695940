#include "studio/access/Gate.h"

#include "platform/crypto/Secret.h"
#include "studio/access/Cookies.h"
#include "studio/api/Problem.h"

namespace multiscene::studio {

using platform::http::RequestHead;

namespace {

constexpr const char* kPageTokenHeader = "X-Studio-Token";
constexpr size_t kMostSecretBytes = 200;

/// "Bearer mst_…"; empty for anything else.
std::string bearerToken(const RequestHead& head) {
    const std::string value = head.header("Authorization");
    constexpr std::string_view scheme = "Bearer ";
    if (value.size() < scheme.size() || !platform::http::sameToken(value.substr(0, scheme.size()), scheme))
        return {};
    return value.substr(scheme.size());
}

bool changesSomething(const RequestHead& head) { return head.method != "GET" && head.method != "HEAD"; }

}  // namespace

/// Cookies of one host are for all its ports: several studios have several names.
std::string Gate::cookieName(const RequestHead& head) {
    const size_t colon = head.host.rfind(':');
    const std::string port = colon == std::string::npos ? "" : head.host.substr(colon + 1);
    const bool isPort = !port.empty() && port.find_first_not_of("0123456789") == std::string::npos;
    return "multiscene" + (isPort ? "-" + port : "");
}

std::string Gate::cookie(const RequestHead& head) { return cookieOf(head, cookieName(head)); }

std::string Gate::pageToken(const std::string& cookie) {
    return platform::textDigest(std::string(kPageTokenHeader) + cookie).substr(0, 32);
}

std::optional<Session> Gate::whoAsks(const RequestHead& head, bool changes) const {
    const bool hasBearer = !head.header("Authorization").empty();
    const std::string secret = hasBearer ? bearerToken(head) : cookie(head);
    if (secret.empty() || secret.size() > kMostSecretBytes) return std::nullopt;
    std::optional<Session> session = sessions_.find(secret);
    // A token is no cookie, and a cookie no token.
    if (!session || (session->kind == Session::Kind::Token) != hasBearer) return std::nullopt;
    if (changes && !hasBearer && !platform::sameSecret(head.header(kPageTokenHeader), pageToken(secret)))
        throw Problem(403, "page-token-missing", "a change needs the page's token in X-Studio-Token");
    return session;
}

Session Gate::judge(const RequestHead& head, Access wanted) const {
    const bool changes = changesSomething(head);
    if ((changes || wanted != Access::Public) && origins_.isForeign(head))
        throw Problem(403, "foreign-origin", "a page of another origin asks");
    if (wanted == Access::Public) return {};
    const std::optional<Session> session = whoAsks(head, changes);
    if (!session) throw Problem(401, "unknown", "nobody known asks: open the studio from the program again");
    if (!session->may(wanted))
        throw Problem(403, "scope", std::string("this needs the scope \"") + wordOf(wanted) + "\"");
    return *session;
}

}  // namespace multiscene::studio
