#include <fstream>
#include <map>

#include "StudioFixture.h"
#include "tests/app/StaticServer.h"

namespace multiscene::studio {
namespace {

namespace fs = std::filesystem;
using platform::Value;
using testing::HasSubstr;
using testing::StartsWith;

class TemplatesTest : public StudioFixture {
  protected:
    void SetUp() override {
        StudioFixture::SetUp();
        start();
        who = browser();
    }
    Value cards(const std::string& query = "") const {
        const Reply reply = get("/api/v1/templates" + query, who);
        EXPECT_EQ(reply.status, 200) << reply.body;
        return reply.json()["templates"];
    }
    std::string title(const std::string& name, const std::string& language) const {
        const Value all = cards("?lang=" + language);
        for (const Value& each : all.array())
            if (each.string("name") == name) return each.string("title");
        return {};
    }
    /// Installs a sample as a user would at the command line, beside the running studio.
    int program(const std::string& words) const {
        return std::system(
            (programUnderTest().string() + " --home " + home.string() + " " + words + " >/dev/null 2>&1")
                .c_str());
    }

    /// The files that are kept, and when each was made.
    std::map<fs::path, fs::file_time_type> kept() const {
        std::map<fs::path, fs::file_time_type> made;
        for (const auto& entry : fs::directory_iterator(home / "studio" / "cache"))
            made[entry.path()] = entry.last_write_time();
        return made;
    }

    Who who;
};

TEST_F(TemplatesTest, showsSamplesInEveryLanguageAtFirstStart) {
    EXPECT_EQ(title("sunny-day", "en"), "Sunny Day");
    EXPECT_EQ(title("sunny-day", "zh"), "晴天");
    EXPECT_EQ(title("sunny-day", "ja"), "晴れの日");
    EXPECT_EQ(cards("?search=%E6%99%B4%E5%A4%A9").array().size(), 1u);
    EXPECT_EQ(cards("?search=SUNNY").array().size(), 1u);
    EXPECT_GT(cards("?state=sample").array().size(), 8u);
    EXPECT_EQ(cards("?state=installed").array().size(), 0u);

    const Value found = get("/api/v1/templates/1100?lang=ja", who).json();
    EXPECT_EQ(found.string("state"), "sample");
    EXPECT_EQ(found.integer("frames"), 300);
    EXPECT_EQ(found.array("inputs")[0].string("label"), "タイトル");
    EXPECT_EQ(found["sampleValues"].string("title"), "Hello Sunshine");
    EXPECT_TRUE(found.boolean("music"));
    EXPECT_TRUE(found.array("findings").empty());
    const Reply picture = get(found.string("thumbnail"), who);
    EXPECT_EQ(picture.field("Content-Type"), "image/jpeg");
    EXPECT_THAT(picture.body, StartsWith("\xff\xd8\xff"));
    for (const char* none :
         {"/api/v1/templates/1", "/api/v1/templates/1100x", "/api/v1/templates/none/thumbnail"})
        EXPECT_EQ(get(none, who).status, 404) << none;
    EXPECT_EQ(ask("DELETE", "/api/v1/templates/1100", who).code(), "not-installed");
}

/// What is installed beside the studio is seen, removed by it, and none of its files leads elsewhere.
TEST_F(TemplatesTest, followsTheCatalogue) {
    const fs::path made = home / "made";
    ASSERT_EQ(program("template new " + (made / "party").string()), 0);
    const std::string archive = (made / "party.zip").string();
    ASSERT_EQ(program("template pack " + (made / "party").string() + " -o " + archive), 0);
    ASSERT_EQ(program("templates install " + archive), 0);
    const Value all = cards("?state=installed");
    ASSERT_EQ(all.array().size(), 1u);
    const std::string base = "/api/v1/templates/" + std::to_string(all.array()[0].integer("id"));
    const fs::path folder = home / "qvMultiSceneRender" / "scene" / "party";
    ASSERT_TRUE(fs::is_directory(folder));

    std::ofstream(folder / "preview.mp4") << std::string("\0\0\0\x18", 4) << "ftypmp42 and so on";
    EXPECT_EQ(get(base + "/preview.mp4", who).field("Content-Type"), "video/mp4");
    EXPECT_EQ(ask("GET", base + "/preview.mp4", who, "Range: bytes=4-7\r\n").body, "ftyp");
    std::ofstream(folder / "preview.mp4") << "<html>no video</html>";
    EXPECT_EQ(get(base + "/preview.mp4", who).status, 404);
    fs::remove(folder / "preview.mp4");
    std::ofstream(home / "other.mp4") << std::string("\0\0\0\x18", 4) << "ftypmp42";
    fs::create_symlink(home / "other.mp4", folder / "preview.mp4");
    EXPECT_EQ(get(base + "/preview.mp4", who).status, 404);

    EXPECT_EQ(ask("DELETE", base, {who.cookie, "", ""}).status, 403);
    EXPECT_EQ(ask("DELETE", base, who).status, 204);
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_EQ(get(base, who).status, 404);
    EXPECT_EQ(cards("?state=installed").array().size(), 0u);
}

/// One that brings no video is shown with its sample inputs, once.
TEST_F(TemplatesTest, makesTheVideosThatTemplatesDoNotBring) {
    const Value found = cards("?search=minimal").array()[0];
    const Reply first = get(found.string("preview"), who);
    EXPECT_EQ(first.status, 200) << first.body;
    EXPECT_EQ(first.field("Content-Type"), "video/mp4");
    EXPECT_EQ(first.body.substr(4, 4), "ftyp");
    EXPECT_THAT(get("/api/v1/jobs", who).json().array("jobs"), testing::IsEmpty());
    settings.port = studio->port();
    studio.reset();
    start();
    const auto made = kept();
    EXPECT_EQ(get(found.string("preview"), who).body, first.body);
    EXPECT_EQ(kept(), made) << "it is made once";
}

/// A browser may load nothing from elsewhere: what the server shows comes through the studio, once.
TEST_F(TemplatesTest, showsWhatIsOfferedWithoutInstallingIt) {
    const fs::path party = home / "made" / "party", offered = home / "offered";
    ASSERT_EQ(program("template new " + party.string()), 0);
    ASSERT_EQ(program("template publish " + party.string() + " --to " + offered.string()), 0);
    auto server = std::make_unique<test::StaticServer>(offered, home / "nginx");
    ASSERT_EQ(program("templates update --server " + server->address()), 0);
    const Value all = cards("?state=offered");
    ASSERT_EQ(all.array().size(), 1u);
    const Reply picture = get(all.array()[0].string("thumbnail"), who);
    EXPECT_THAT(picture.field("Content-Type"), StartsWith("image/"));
    EXPECT_EQ(get(all.array()[0].string("preview"), who).field("Content-Type"), "video/mp4");
    server.reset();
    EXPECT_EQ(get(all.array()[0].string("thumbnail"), who).body, picture.body);
}

TEST_F(TemplatesTest, saysWhatWentWrongWithTheRunThatReads) {
    settings.program = "/bin/false";
    studio.reset();
    start();
    who = browser();
    const Reply reply = get("/api/v1/templates", who);
    EXPECT_EQ(reply.status, 500);
    EXPECT_THAT(reply.json().string("detail"), HasSubstr("ended without a result"));
    EXPECT_EQ(get("/healthz").status, 200);
}

}  // namespace
}  // namespace multiscene::studio
