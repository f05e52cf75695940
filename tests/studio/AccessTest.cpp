#include <sys/stat.h>

#include "StudioFixture.h"
#include "platform/base/Error.h"
#include "studio/access/SessionStore.h"

namespace multiscene::studio {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string contentOf(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

unsigned modeOf(const fs::path& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 0777;
}

class AccessTest : public StudioFixture {
  protected:
    void SetUp() override {
        StudioFixture::SetUp();
        start();
    }
    Reply patchSettings(const Who& who, const std::string& lines = "") const {
        return sendJson("PATCH", "/api/v1/settings", R"({"usageSharing":true})", who, lines);
    }
};

/// What may be asked without being known, and everything else.
TEST_F(AccessTest, letsNobodyUnknownIn) {
    for (const char* open : {"/healthz", "/readyz", "/api/v1/openapi.json"})
        EXPECT_EQ(get(open).status, 200) << open;
    for (const char* shut : {"/api/v1/settings", "/api/v1/sessions/current", "/api/v1/sessions"}) {
        const Reply reply = get(shut);
        EXPECT_EQ(reply.status, 401) << shut;
        EXPECT_EQ(reply.field("Content-Type"), "application/problem+json");
        EXPECT_EQ(reply.json().integer("status"), 401);
    }
    const Who invented{"multiscene-" + std::to_string(studio->port()) + "=msc_aaaa", "aaaa", ""};
    EXPECT_EQ(get("/api/v1/settings", invented).status, 401);
    EXPECT_EQ(get("/api/v1/settings", {"", "", "mst_aaaa"}).status, 401);
}

TEST_F(AccessTest, opensThePageOnceWithEachKey) {
    const std::string first = key();
    EXPECT_EQ(contentOf(studio->addressFile()), studio->address() + "\n");
    EXPECT_THAT(studio->address(), StartsWith("http://" + host() + "/#key="));
    const Reply reply = sendJson("POST", "/api/v1/sessions", "{\"key\":\"" + first + "\"}");
    const Who who = known(reply);
    EXPECT_THAT(reply.field("Set-Cookie"), HasSubstr("; HttpOnly; SameSite=Strict"));
    EXPECT_EQ(reply.json().string("kind"), "local");
    EXPECT_EQ(sendJson("POST", "/api/v1/sessions", "{\"key\":\"" + first + "\"}").status, 401);
    EXPECT_NE(key(), first);

    // A page that is loaded again has its cookie, and the same token.
    EXPECT_EQ(get("/api/v1/sessions/current", who).json().string("token"), who.pageToken);
    EXPECT_TRUE(get("/api/v1/settings", who).json().boolean("isLocal"));
    const Who again = browser();
    EXPECT_NE(again.cookie, who.cookie);

    EXPECT_EQ(ask("DELETE", "/api/v1/sessions/current", who).status, 204);
    EXPECT_EQ(get("/api/v1/settings", who).status, 401);
    EXPECT_EQ(get("/api/v1/settings", again).status, 200);
}

/// What another page makes a browser send that has the cookie.
TEST_F(AccessTest, refusesWhatOtherPagesSend) {
    const Who who = browser();
    const std::string here = "Origin: http://" + host() + "\r\n";
    EXPECT_EQ(patchSettings(who).status, 200);
    EXPECT_EQ(patchSettings(who, here + "Sec-Fetch-Site: same-origin\r\n").status, 200);
    const std::string other = "Origin: http://127.0.0.1:1\r\n";
    for (const std::string& lines :
         {std::string("Origin: http://evil.example\r\n"), std::string("Origin: null\r\n"), other,
          "Origin: https://" + host() + "\r\n", std::string("Sec-Fetch-Site: cross-site\r\n"),
          std::string("Sec-Fetch-Site: same-site\r\n"), here + "Sec-Fetch-Site: cross-site\r\n"}) {
        EXPECT_EQ(patchSettings(who, lines).code(), "foreign-origin") << lines;
        const Reply read = ask("GET", "/api/v1/settings", who, lines);
        EXPECT_EQ(read.status, 403) << lines;
        EXPECT_THAT(read.field("Access-Control-Allow-Origin"), IsEmpty());
        EXPECT_EQ(sendJson("POST", "/api/v1/sessions", "{\"key\":\"" + key() + "\"}", {}, lines).status, 403);
    }
    EXPECT_EQ(patchSettings({who.cookie, "", ""}).code(), "page-token-missing");
    EXPECT_EQ(patchSettings({who.cookie, browser().pageToken, ""}).code(), "page-token-missing");
    EXPECT_EQ(patchSettings({"", who.pageToken, ""}).status, 401);
    // What a form can say without asking the server first.
    for (const char* type :
         {"text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x"})
        EXPECT_EQ(send("PATCH /api/v1/settings HTTP/1.1\r\n" + hostLine() + who.lines() +
                       "Content-Type: " + type + "\r\nContent-Length: 21\r\n\r\n{\"usageSharing\":true}")
                      .status,
                  415)
            << type;
    EXPECT_EQ(ask("GET", "/api/v1/settings", who, "Upgrade: websocket\r\nConnection: Upgrade\r\n").status,
              501);
}

TEST_F(AccessTest, isCalledByItsOwnNameAlone) {
    const std::string port = std::to_string(studio->port());
    for (const std::string& name : {"127.0.0.1:" + port, "localhost:" + port, "[::1]:" + port})
        EXPECT_EQ(send("GET /healthz HTTP/1.1\r\nHost: " + name + "\r\n\r\n").status, 200) << name;
    for (const std::string& name : {"evil.example:" + port, std::string("127.0.0.1:1"), "0.0.0.0:" + port,
                                    "localhost.evil:" + port, std::string("localhost"), std::string()}) {
        const Reply reply = send("GET /healthz HTTP/1.1\r\nHost: " + name + "\r\n\r\n");
        EXPECT_THAT(reply.status, testing::AnyOf(400, 403)) << name;
        EXPECT_EQ(reply.field("Content-Type"), "application/problem+json") << name;
    }
}

TEST_F(AccessTest, limitsTries) {
    std::vector<int> statuses;
    for (int attempt = 0; attempt < 7; ++attempt)
        statuses.push_back(sendJson("POST", "/api/v1/sessions", R"({"key":"wrong"})").status);
    EXPECT_THAT(statuses, testing::ElementsAre(401, 401, 401, 401, 401, 429, 429));
    const Reply right = sendJson("POST", "/api/v1/sessions", "{\"key\":\"" + key() + "\"}");
    EXPECT_EQ(right.status, 429);
    EXPECT_EQ(right.field("Retry-After"), "60");
}

TEST_F(AccessTest, heedsTokensAndTheirScopes) {
    SessionStore sessions(home / "studio" / "studio.db");
    const Who reader{"", "", sessions.addToken("reader", Access::Read)};
    const Who maker{"", "", sessions.addToken("maker", Access::Make)};
    const Who admin{"", "", sessions.addToken("admin", Access::Admin)};
    EXPECT_THROW(sessions.addToken("maker", Access::Make), platform::Error);
    const std::string love = R"({"answer":"love"})";
    for (const auto& [who, read, make, administer] : std::vector<std::tuple<Who, int, int, int>>{
             {reader, 200, 403, 403}, {maker, 200, 204, 403}, {admin, 200, 204, 200}}) {
        EXPECT_EQ(get("/api/v1/settings", who).status, read);
        EXPECT_EQ(sendJson("PUT", "/api/v1/rating", love, who).status, make);
        EXPECT_EQ(patchSettings(who).status, administer);
        EXPECT_EQ(
            patchSettings({"multiscene-" + std::to_string(studio->port()) + "=" + who.bearer, "", ""}).status,
            401);
    }
    EXPECT_THAT(contentOf(home / "studio" / "studio.db") + contentOf(home / "studio" / "studio.db-wal"),
                Not(HasSubstr(maker.bearer)));
    platform::test::HttpClient hearing(studio->port());
    hearing.send("GET /api/v1/events HTTP/1.1\r\n" + hostLine() + maker.lines() + "\r\n");
    EXPECT_THAT(hearing.readUntil("\r\n\r\n"), HasSubstr(" 200 "));
    const platform::Value all = get("/api/v1/sessions", admin).json();
    for (const platform::Value& each : all.array("sessions")) {
        if (each.string("name") != "maker") continue;
        EXPECT_EQ(ask("DELETE", "/api/v1/sessions/" + each.string("id"), admin).status, 204);
    }
    EXPECT_EQ(get("/api/v1/settings", maker).status, 401);
    hearing.readToEnd();
    EXPECT_TRUE(hearing.hasEnded()) << "who is let in no more hears nothing more";
    EXPECT_EQ(get("/api/v1/settings", reader).status, 200);
}

TEST_F(AccessTest, keepsItsFolderToItself) {
    EXPECT_EQ(modeOf(home / "studio"), 0700u);
    EXPECT_EQ(modeOf(studio->addressFile()), 0600u);
    for (const auto& entry : fs::recursive_directory_iterator(home / "studio"))
        EXPECT_EQ(modeOf(entry.path()) & 077, 0u) << entry.path();
    try {
        Studio second(settings);
        FAIL() << "a second one runs";
    } catch (const platform::Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("runs already"));
        EXPECT_THAT(error.what(), Not(HasSubstr("key=")));
    }
    settings.home = home / "other";
    settings.port = studio->port();
    EXPECT_THROW(Studio other(settings), platform::Error);
    const fs::path address = studio->addressFile();
    studio->stop();
    EXPECT_FALSE(fs::exists(address));
}

TEST_F(AccessTest, remembersBrowsersAcrossStarts) {
    const Who who = browser();
    EXPECT_EQ(patchSettings(who).status, 200);
    EXPECT_NE(get("/api/v1/settings", who).json().string("fence"), "none");
    settings.port = studio->port();
    settings.programOptions = {"--no-fence"};
    studio.reset();
    start();
    EXPECT_EQ(get("/api/v1/settings", who).json().string("fence"), "none");
    EXPECT_TRUE(get("/api/v1/settings", who).json().boolean("usageSharing"));
}

struct Asked {
    std::string method, target;
    int status;
};

/// Paths that lead elsewhere, methods, queries.
TEST_F(AccessTest, answersOddRequestsWithProblems) {
    fs::create_directories(settings.pageFolder / "assets");
    std::ofstream(settings.pageFolder / "index.html") << "<!doctype html>";
    std::ofstream(settings.pageFolder / "assets" / "page-1.js") << "1";
    fs::create_symlink("/etc/passwd", settings.pageFolder / "assets" / "passwd.js");
    fs::create_directories(settings.pageFolder / "assets" / "folder.js");
    const Who who = browser();
    const std::vector<Asked> requests = {
        {"GET", "/", 200},
        {"HEAD", "/", 200},
        {"GET", "/assets/page-1.js", 200},
        {"GET", "/?key=1", 200},
        {"GET", "/assets/passwd.js", 404},
        {"GET", "/assets/folder.js", 404},
        {"GET", "/assets/../index.html", 400},
        {"GET", "/assets/%2e%2e/index.html", 400},
        {"GET", "/assets/%2e%2e%2findex.html", 400},
        {"GET", "/assets/%252e%252e%252findex.html", 404},
        {"GET", "/assets/..%5cindex.html", 400},
        {"GET", "/assets/index.js%00", 400},
        {"GET", "/assets/%c0%ae%c0%ae/index.html", 400},
        {"GET", "//etc/passwd", 400},
        {"GET", "/proc/self/environ", 404},
        {"GET", "/studio.db", 404},
        {"GET", "/.hidden.js", 404},
        {"GET", "/" + std::string(4000, 'a') + ".js", 404},
        {"GET", "/api/v1/nothing", 404},
        {"GET", "/api/v1/settings/", 404},
        {"GET", "/api/v1/settings?lang=ja", 200},
        {"GET", "/api/v1/settings?langauge=ja", 400},
        {"DELETE", "/api/v1/settings", 405},
        {"GET", "/api/v1/rating", 405},
        {"POST", "/", 405},
        {"DELETE", "/api/v1/sessions/ses_nobody", 404},
    };
    for (const Asked& each : requests) {
        const Reply reply = ask(each.method, each.target, who);
        EXPECT_EQ(reply.status, each.status) << each.method << " " << each.target;
        EXPECT_EQ(reply.field("X-Content-Type-Options"), "nosniff") << each.target;
        if (reply.status >= 400) {
            EXPECT_EQ(reply.field("Content-Type"), "application/problem+json") << each.target;
        }
    }
    EXPECT_EQ(ask("DELETE", "/api/v1/settings", who).field("Allow"), "GET, PATCH");
    const Reply chinese = ask("GET", "/api/v1/nothing", who, "Accept-Language: zh-CN,zh;q=0.9\r\n");
    EXPECT_EQ(chinese.json().string("detail"), "它不存在,或已被删除。");
    EXPECT_EQ(chinese.code(), "not-found");
    EXPECT_EQ(get("/api/v1/settings?lang=ja").json().string("title"),
              "確認できませんでした。プログラムからスタジオを開き直してください。");
    EXPECT_EQ(get("/api/v1/settings?lang=zh-CN", who).json().string("language"), "zh");
}

struct BodySent {
    std::string body;
    int status;
    std::string pointer;
};

TEST_F(AccessTest, refusesBodiesWithAPointer) {
    const Who who = browser();
    const std::vector<BodySent> bodies = {
        {R"({"usageSharing":true})", 200, ""},
        {R"({"usageSharing":"yes"})", 400, "/usageSharing"},
        {R"({"usageSharing":null})", 400, "/usageSharing"},
        {R"({})", 400, "/usageSharing"},
        {R"({"usageSharing":true,"us/age~":1})", 400, "/us~1age~0"},
        {R"([true])", 400, ""},
        {R"({"usageSharing":true)", 400, ""},
        {"", 400, ""},
        {std::string(60, '['), 400, ""},
        {"{\"usageSharing\":" + std::string(900, ' ') + "true}", 200, ""},
        {"{\"usageSharing\":" + std::string(1100, ' ') + "true}", 413, ""},
    };
    for (const BodySent& each : bodies) {
        const Reply reply = sendJson("PATCH", "/api/v1/settings", each.body, who);
        EXPECT_EQ(reply.status, each.status) << each.body;
        if (reply.status != 400) continue;
        ASSERT_FALSE(reply.json().array("errors").empty()) << reply.body;
        EXPECT_EQ(reply.json().array("errors")[0].string("pointer"), each.pointer) << each.body;
    }
    const Reply huge = send("PATCH /api/v1/settings HTTP/1.1\r\n" + hostLine() + who.lines() +
                            "Content-Type: application/json\r\nContent-Length: 107374182400\r\n\r\n");
    EXPECT_EQ(huge.status, 413);
    // Nothing of a body is read of whom nobody knows.
    EXPECT_EQ(send("PATCH /api/v1/settings HTTP/1.1\r\n" + hostLine() +
                   "Content-Type: application/json\r\nContent-Length: 107374182400\r\n\r\n")
                  .status,
              401);
}

TEST_F(AccessTest, pairsDevicesOfTheNetwork) {
    EXPECT_TRUE(get("/api/v1/settings", browser()).json()["pairing"].isNone());
    EXPECT_EQ(sendJson("POST", "/api/v1/sessions", R"({"code":"000000"})").status, 401);
    studio.reset();
    settings.isListening = true;
    std::vector<std::string> codes;
    settings.pairing = [&](const std::string& code, const std::string& url) {
        codes.push_back(code);
        EXPECT_THAT(url, testing::EndsWith("/#code=" + code));
    };
    start();
    const Who desktop = browser();
    const platform::Value shown = get("/api/v1/settings", desktop).json()["pairing"];
    EXPECT_THAT(shown.string("code"), testing::MatchesRegex("[0-9]{6}"));
    const Who phone =
        known(sendJson("POST", "/api/v1/sessions", "{\"code\":\"" + shown.string("code") + "\"}", {},
                       "User-Agent: Mozilla/5.0 (iPhone; CPU iPhone OS 17_0)\r\n"));
    EXPECT_THAT(codes, testing::SizeIs(2)) << "a code that was used is another one";
    EXPECT_EQ(sendJson("POST", "/api/v1/sessions", "{\"code\":\"" + shown.string("code") + "\"}").status,
              401);
    const platform::Value seen = get("/api/v1/settings", phone).json();
    EXPECT_FALSE(seen.boolean("isLocal"));
    EXPECT_TRUE(seen["pairing"].isNone()) << "whom the code let in shall not let in others";
    EXPECT_EQ(get("/api/v1/sessions", phone).status, 403);
    bool isListed = false;
    const platform::Value all = get("/api/v1/sessions", desktop).json();
    for (const platform::Value& each : all.array("sessions"))
        isListed = isListed || (each.string("kind") == "paired" && each.string("name") == "iPhone");
    EXPECT_TRUE(isListed);
}

TEST_F(AccessTest, endsInTimeWhateverClientsDo) {
    platform::test::HttpClient slow(studio->port());
    slow.send("PATCH /api/v1/settings HTTP/1.1\r\n" + hostLine() + browser().lines() +
              "Content-Type: application/json\r\nContent-Length: 21\r\n\r\n{");
    studio->stop();  // comes back, though the body never does
}

TEST_F(AccessTest, servesThePageAsItWasBuilt) {
    EXPECT_EQ(get("/").status, 503);
    EXPECT_THAT(get("/").body, HasSubstr("studio_page"));
    fs::create_directories(settings.pageFolder / "assets");
    std::ofstream(settings.pageFolder / "index.html") << "plain";
    std::ofstream(settings.pageFolder / "assets" / "a-1.css") << "plain";
    std::ofstream(settings.pageFolder / "assets" / "a-1.css.gz") << "packed";
    const Reply index = get("/");
    EXPECT_EQ(index.body, "plain");
    EXPECT_EQ(index.field("Content-Type"), "text/html; charset=utf-8");
    EXPECT_EQ(index.field("Cache-Control"), "no-cache");
    EXPECT_THAT(index.head, HasSubstr("Content-Security-Policy: default-src 'none'; script-src 'self'"));
    EXPECT_EQ(ask("GET", "/", {}, "If-None-Match: " + index.field("ETag") + "\r\n").status, 304);
    const Reply packed = ask("GET", "/assets/a-1.css", {}, "Accept-Encoding: br, gzip\r\n");
    EXPECT_EQ(packed.body, "packed");
    EXPECT_EQ(packed.field("Content-Encoding"), "gzip");
    EXPECT_EQ(packed.field("Content-Type"), "text/css; charset=utf-8");
    EXPECT_THAT(packed.field("Cache-Control"), HasSubstr("immutable"));
    EXPECT_EQ(get("/assets/a-1.css").body, "plain");
}

}  // namespace
}  // namespace multiscene::studio
