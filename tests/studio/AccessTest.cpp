#include <sys/stat.h>

#include "StudioFixture.h"
#include "platform/base/Error.h"
#include "platform/store/Database.h"
#include "studio/access/SessionStore.h"

namespace multiscene::studio {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
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

TEST_F(AccessTest, saysWhatIsWrongInTheLanguageOfTheRequest) {
    const Who who = browser();
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
        {R"({})", 400, "/usageSharing"},
        {R"({"usageSharing":true,"us/age~":1})", 400, "/us~1age~0"},
        {R"({"usageSharing":true)", 400, ""},
        {"{\"usageSharing\":" + std::string(900, ' ') + "true}", 200, ""},
    };
    for (const BodySent& each : bodies) {
        const Reply reply = sendJson("PATCH", "/api/v1/settings", each.body, who);
        EXPECT_EQ(reply.status, each.status) << each.body;
        if (reply.status != 400) continue;
        ASSERT_FALSE(reply.json().array("errors").empty()) << reply.body;
        EXPECT_EQ(reply.json().array("errors")[0].string("pointer"), each.pointer) << each.body;
    }
}

TEST_F(AccessTest, pairsDevicesOfTheNetwork) {
    EXPECT_TRUE(get("/api/v1/settings", browser()).json()["pairing"].isNone());
    EXPECT_EQ(sendJson("POST", "/api/v1/sessions", R"({"code":"000000"})").status, 401);
    studio.reset();
    settings.isListening = true;
    settings.limits.devices = 1;
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
    EXPECT_EQ(sendJson("POST", "/api/v1/sessions", "{\"code\":\"" + codes[1] + "\"}").status, 429)
        << "there are as many as may be";
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

TEST(StatementTest, aChangeIsWrittenDownOrFails) {
    platform::Database database(platform::Database::kInMemory);
    database.execute(
        "PRAGMA foreign_keys=ON; CREATE TABLE a(id INTEGER PRIMARY KEY);"
        "CREATE TABLE b(a INTEGER REFERENCES a DEFERRABLE INITIALLY DEFERRED)");
    EXPECT_THROW(database.prepare("INSERT INTO b VALUES(7) RETURNING a").run(), platform::Error);
}

/// Of an earlier version, of a later one, of none.
TEST_F(AccessTest, takesTheDatabaseOfAnEarlierVersion) {
    const fs::path file = home / "studio" / "studio.db", video = home / "studio" / "videos" / "vid_a.mp4";
    const Who who = browser();
    EXPECT_EQ(patchSettings(who).status, 200);
    settings.port = studio->port();
    studio.reset();
    {
        platform::Database database(file.string());
        for (const char* words :
             {"ALTER TABLE job DROP COLUMN deaths", "ALTER TABLE webhook DROP COLUMN old_secret",
              "ALTER TABLE webhook DROP COLUMN old_until", "PRAGMA user_version=0"})
            database.execute(words);
    }
    start();
    EXPECT_TRUE(get("/api/v1/settings", who).json().boolean("usageSharing"));
    EXPECT_EQ(get("/api/v1/webhooks", who).status, 200);
    EXPECT_EQ(sendJson("POST", "/api/v1/webhooks", R"({"url":"http://127.0.0.1/"})", who).status, 201);
    EXPECT_EQ(get("/api/v1/jobs", who).status, 200);
    studio.reset();

    platform::Database(file.string()).execute("PRAGMA user_version=99");
    for (const auto& open :
         std::vector<std::function<void()>>{[&] { start(); }, [&] { SessionStore token(file); }})
        try {
            open();
            FAIL() << "it takes what it does not know";
        } catch (const platform::Error& error) {
            EXPECT_THAT(error.what(),
                        HasSubstr("studio.db: a newer version of the program has written this"));
        }

    std::ofstream(file) << std::string(100'000, 'x');
    std::ofstream(video) << "a video";
    std::string told;
    settings.notice = [&](const std::string& text) { told = text; };
    start();
    EXPECT_THAT(told, HasSubstr("set aside with its videos in "));
    const fs::path aside = told.substr(told.find(" in ") + 4, told.rfind(", and") - told.find(" in ") - 4);
    EXPECT_EQ(contentOf(aside / "videos" / "vid_a.mp4"), "a video");
    EXPECT_EQ(contentOf(aside / "studio.db").size(), 100'000u);
    EXPECT_EQ(get("/api/v1/settings", who).status, 401);
    EXPECT_FALSE(get("/api/v1/settings", browser()).json().boolean("usageSharing"));
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
