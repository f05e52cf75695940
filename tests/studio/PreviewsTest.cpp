// Stills of a template that somebody fills in: the pictures of the video, whatever is asked for in whatever
// order.
#include <fcntl.h>
#include <signal.h>

#include <future>

#include "platform/image/ImageDecoder.h"
#include "studio/access/SessionStore.h"
#include "tests/studio/JobsFixture.h"

namespace multiscene::studio {
namespace {

namespace fs = std::filesystem;
using platform::Value;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class PreviewsTest : public JobsFixture {
  protected:
    static constexpr const char* kOpening = R"({"template":1000,"width":180,"values":{)";

    Value open(const std::string& values = "") {
        const Reply reply = sendJson("POST", "/api/v1/previews", kOpening + values + "}}", me);
        EXPECT_EQ(reply.status, 201) << reply.body;
        return reply.json();
    }
    std::string addressOf(const Value& preview) const { return "/api/v1/previews/" + preview.string("id"); }
    Reply still(const std::string& address, const std::string& values, int64_t frame) const {
        return sendJson("POST", address + "/still",
                        R"({"frame":)" + std::to_string(frame) + R"(,"values":{)" + values + "}}", me);
    }
    platform::Bitmap decoded(const std::string& bytes) const {
        const fs::path file = home / "still";
        std::ofstream(file, std::ios::binary) << bytes;
        return platform::decodeImage(platform::FileHandle(::open(file.c_str(), O_RDONLY)));
    }
    /// The largest difference of small squares' brightness: a JPEG is no exact copy.
    static int differenceOf(const platform::Bitmap& one, const platform::Bitmap& other) {
        if (one.size() != other.size()) return 255;
        constexpr int side = 4;
        const auto brightness = [](const uint8_t* pixel) {
            return (3 * pixel[0] + 6 * pixel[1] + pixel[2]) / 10;
        };
        int largest = 0;
        for (int y = 0; y + side <= one.height; y += side)
            for (int x = 0; x + side <= one.width; x += side) {
                int sum = 0;
                for (int i = 0; i < side * side; ++i)
                    sum += brightness(one.pixel(x + i % side, y + i / side)) -
                           brightness(other.pixel(x + i % side, y + i / side));
                largest = std::max(largest, std::abs(sum) / (side * side));
            }
        return largest;
    }
    /// A frame as "frames" makes it.
    platform::Bitmap exported(const std::string& media, int64_t frame) const {
        std::ofstream(home / "media.json") << "{" << media << "}";
        const auto made =
            test::run({programUnderTest(), "--home", home, "frames", "1000", "--media", home / "media.json",
                       "--size", "180x320", "--at", std::to_string(frame), "-o", home / "frames"});
        EXPECT_EQ(made.exitCode, 0) << made.errors;
        char name[40];
        std::snprintf(name, sizeof name, "frame-%06d.png", static_cast<int>(frame));
        return platform::decodeImage(
            platform::FileHandle(::open((home / "frames" / name).c_str(), O_RDONLY)));
    }
    /// Runs of "hold" that are this process's children.
    static std::vector<pid_t> programs() {
        std::vector<pid_t> found;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            if (std::atoi(entry.path().filename().c_str()) < 1) continue;
            std::ifstream status(entry.path() / "stat"), words(entry.path() / "cmdline");
            std::string stat((std::istreambuf_iterator<char>(status)), {}),
                line((std::istreambuf_iterator<char>(words)), {});
            const size_t name = stat.rfind(") ");
            if (name == std::string::npos || std::atoi(stat.c_str() + name + 4) != ::getpid()) continue;
            if (line.find(std::string("hold", 5)) != std::string::npos)
                found.push_back(std::stoi(entry.path().filename()));
        }
        return found;
    }
};

TEST_F(PreviewsTest, ShowTheFramesOfTheVideoWithWhatIsFilledIn) {
    begin();
    const std::string photo = uploadPicture();
    const auto file = (studioFolder() / "uploads" / photo / "own" / "photo.jpg").string();
    const std::string crop = R"("crop":{"x":0.1,"y":0.1,"width":0.5,"height":0.7,"angle":10})";
    const auto values = [&](const std::string& text) {
        return R"("text":")" + text + R"(","photo":{"upload":")" + photo + "\"," + crop + "}";
    };
    const auto media = [&](const std::string& text) {
        return R"("text":")" + text + R"(","photo":{"file":")" + file + "\"," + crop + "}";
    };
    const Value preview = open(values("One"));
    EXPECT_EQ(preview.integer("frames"), 90);
    EXPECT_EQ(preview.integer("height"), 320);
    const std::string address = addressOf(preview);
    const Value later = get(address, me).json();
    EXPECT_GT(later["moments"].integer("text"), 20) << "before, it is not there";
    constexpr int tolerance = 6;
    for (const auto& [text, frame] : {std::pair{"One", 60}, {"Two", 60}, {"Two", 20}, {"One", 80}}) {
        const Reply reply = still(address, values(text), frame);
        ASSERT_EQ(reply.status, 200) << reply.body;
        EXPECT_EQ(reply.field("Content-Type"), "image/jpeg");
        EXPECT_EQ(reply.field("X-Frame"), std::to_string(frame));
        EXPECT_LT(differenceOf(decoded(reply.body), exported(media(text), frame)), tolerance)
            << text << frame;
    }
    EXPECT_GT(differenceOf(exported(media("One"), 60), exported(media("Two"), 60)), 3 * tolerance);
    EXPECT_EQ(still(address, "", 5000).field("X-Frame"), "89");

    const Reply long_ = still(address, R"("text":")" + std::string(500, 'x') + "\"", 60);
    EXPECT_EQ(long_.status, 422);
    EXPECT_EQ(long_.json().array("errors")[0].string("pointer"), "/values/text");
    EXPECT_EQ(still(address, "", 60).status, 200) << "one that is wrong takes nothing with it";

    const Who other{"", "", SessionStore(studioFolder() / "studio.db").addToken("other", Access::Make)};
    EXPECT_EQ(get(address, other).code(), "preview-gone");
    EXPECT_EQ(ask("DELETE", address, me).status, 204);
    EXPECT_EQ(still(address, "", 60).code(), "preview-gone");
    EXPECT_THAT(namesIn(studioFolder() / "cache"), IsEmpty());
    EXPECT_EQ(sendJson("POST", "/api/v1/previews", R"({"template":4711})", me).status, 404);
}

TEST_F(PreviewsTest, OneThatNobodyUsesGoes) {
    settings.limits.previews = 2;
    settings.limits.previewSeconds = 2;
    begin();
    std::vector<std::string> addresses;
    for (int count = 0; count < 3; ++count) addresses.push_back(addressOf(open()));
    EXPECT_EQ(get(addresses[0], me).status, 404) << "three are too many";
    EXPECT_EQ(get(addresses[2], me).status, 200);
    while (get(addresses[2], me).status == 200) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(get(addresses[2], me).code(), "preview-gone");
    EXPECT_THAT(namesIn(studioFolder() / "cache"), IsEmpty());
}

TEST_F(PreviewsTest, TheNewestStillWinsAndAStripFillsTheRest) {
    begin();
    const std::string address = addressOf(open());
    std::vector<std::future<Reply>> replies;
    for (int number = 0; number < 12; ++number)
        replies.push_back(std::async(std::launch::async, [&, number] {
            return still(address, R"("text":")" + std::to_string(number) + "\"", 10 + 5 * number);
        }));
    int shown = 0;
    for (auto& reply : replies) {
        const int status = reply.get().status;
        EXPECT_TRUE(status == 200 || status == 204) << status;
        shown += status == 200;
    }
    EXPECT_GE(shown, 1);

    platform::test::HttpClient client(studio->port());
    client.send("GET " + address + "/strip?every=30 HTTP/1.1\r\n" + hostLine() + me.lines() + "\r\n");
    std::string events = client.readUntil("event: end");
    events += client.readUntil("\n\n");
    EXPECT_THAT(events, HasSubstr(R"({"isWhole":true})"));
    for (const char* frame : {"0", "30", "60"}) {
        const std::string picture = address + "/frames/" + frame + ".jpg?v=";
        ASSERT_THAT(events, HasSubstr(picture));
        EXPECT_EQ(get(picture + "1", me).body.substr(0, 2), "\xff\xd8");
    }
    EXPECT_EQ(get(address + "/frames/7.jpg", me).status, 404);
    EXPECT_EQ(get(address + "/frames/x.jpg", me).status, 400);
}

TEST_F(PreviewsTest, APreviewWhoseProgramIsGoneOpensAgainByItself) {
    begin();
    std::vector<std::string> addresses;
    const size_t most = std::max(1U, std::thread::hardware_concurrency()) + 1;
    for (size_t number = 0; number < most + 1; ++number) addresses.push_back(addressOf(open()));
    constexpr size_t ahead = 1;  // for whoever comes next
    for (int tries = 0; tries < 1500 && programs().size() != most + ahead; ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_THAT(programs(), SizeIs(most + ahead)) << "the one that was used first has lost its own";
    EXPECT_EQ(still(addresses.front(), "", 30).status, 200);

    for (const pid_t program : programs()) ::kill(program, SIGKILL);
    for (const std::string& address : addresses) {
        const Reply reply = still(address, "", 30);
        EXPECT_EQ(reply.status, 200) << reply.body;
    }
    studio.reset();
    EXPECT_THAT(programs(), IsEmpty());
}

/// What has read foreign files may say anything.
TEST_F(PreviewsTest, AProgramThatTalksNonsenseOrWithoutEndHarmsNobody) {
    const auto pages = [] {
        long all = 0, resident = 0;
        std::ifstream("/proc/self/statm") >> all >> resident;
        return resident;
    };
    replaceProgram("hold", "echo nonsense >&3; exec sleep 60");
    begin();
    EXPECT_EQ(sendJson("POST", "/api/v1/previews", std::string(kOpening) + "}}", me).code(), "preview-lost");

    studio.reset();
    settings.program = programUnderTest();
    std::ofstream talk(home / "talk");
    for (int picture = 0; picture < 16; ++picture)
        talk << R"({"event":"frame","bytes":1048576})"
             << "\n"
             << std::string(1 << 20, 'x');
    talk.close();
    replaceProgram("hold", "while :; do cat " + (home / "talk").string() + " >&3; done");
    begin();
    platform::test::HttpClient opening(studio->port());
    platform::Database database((studioFolder() / "studio.db").string());
    const std::string body = std::string(kOpening) + "}}";
    opening.send("POST /api/v1/previews HTTP/1.1\r\n" + hostLine() + me.lines() +
                 "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
                 "\r\n\r\n" + body);
    for (int tries = 0; tries < 500 && programs().empty(); ++tries)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const long before = pages();
    database.execute("BEGIN IMMEDIATE");  // what the studio waits for
    const auto asked = std::async(std::launch::async, [&] {
        return sendJson("POST", "/api/v1/jobs", R"({"template":1000,"values":{}})", me).status;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    EXPECT_LT((pages() - before) * ::sysconf(_SC_PAGESIZE), 64 << 20);
    database.execute("ROLLBACK");
}

}  // namespace
}  // namespace multiscene::studio
