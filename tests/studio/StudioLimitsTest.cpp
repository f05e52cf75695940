// Every limit of the studio, tried one below, at, and one above.
#include <set>

#include "studio/access/SessionStore.h"
#include "tests/studio/JobsFixture.h"

namespace multiscene::studio {
namespace {

using platform::test::HttpClient;

/// Files are what they begin with; videos are made for ever.
constexpr const char* kIntake = R"(for last; do file=$folder; folder=$last; done
    tell() { echo "{\"event\":\"intake\",\"kind\":\"$1\",\"file\":\"$2\",\"width\":2,\"height\":2}"; exit 0; }
    case $(head -c 4 "$file") in
      wait) exec sleep 100 ;;
      film) tell video ;;
      tone) tell sound ;;
    esac
    cp "$file" "$folder/photo.jpg"; tell photo photo.jpg)";

class StudioLimitsTest : public JobsFixture {
  protected:
    struct Trial {
        std::string limit;
        uint64_t most;
        int refused;
        std::function<Reply(uint64_t number)> with;
    };

    void beginWith(const std::vector<Trial>& trials) {
        replaceProgram("intake", kIntake);
        replaceProgram("make", "exec sleep 100");
        for (const Trial& trial : trials) settings.limits.set(trial.limit + "=" + std::to_string(trial.most));
        begin();
        waitFor(submit(kSmall).string("id"), "running");
    }

    /// Somebody who has taken nothing yet.
    Who somebody() {
        SessionStore sessions(studioFolder() / "studio.db");
        return {"", "", sessions.addToken(std::to_string(++people_), Access::Make)};
    }
    Reply check(const std::string& values) const {
        return sendJson("POST", "/api/v1/checks", "{\"template\":1000,\"values\":{" + values + "}}", me);
    }
    Reply ask(const std::string& members, const Who& who) {
        const Reply reply = sendJson("POST", "/api/v1/jobs", "{\"template\":1000," + members + "}", who);
        waiting_ += reply.status == 202;
        return reply;
    }
    Reply upload(const std::string& kind, uint64_t bytes, const Who& who) const {
        return send("POST /api/v1/uploads?name=a HTTP/1.1\r\n" + hostLine() + who.lines() +
                    "Content-Length: " + std::to_string(bytes) + "\r\n\r\n" + kind +
                    std::string(bytes - kind.size(), 'x'));
    }
    /// So many times, by somebody new; the last answer.
    Reply times(uint64_t number, const std::function<Reply(const Who&)>& once) {
        const Who who = somebody();
        while (--number > 0) EXPECT_LT(once(who).status, 300);
        return once(who);
    }

    std::vector<Trial> bodies() {
        return {
            {"maxStudioBodyBytes", 600, 413,
             [this](uint64_t bytes) {
                 const std::string body = "{\"template\":1000}";
                 return sendJson("POST", "/api/v1/checks", body + std::string(bytes - body.size(), ' '), me);
             }},
            {"maxStudioValues", 3, 400,
             [this](uint64_t number) {
                 std::string values;
                 while (number > 0)
                     values += (values.empty() ? "\"" : ",\"") + std::to_string(number--) + "\":\"\"";
                 return check(values);
             }},
            {"maxStudioValueCharacters", 20, 400,
             [this](uint64_t number) { return check("\"text\":\"" + std::string(number, 'a') + "\""); }},
            {"maxStudioMetadataBytes", 30, 422,
             [this](uint64_t bytes) {
                 return ask("\"metadata\":\"" + std::string(bytes - 2, 'a') + "\"", somebody());
             }},
        };
    }
    std::vector<Trial> uploads() {
        const auto one = [this](const char* kind) {
            return [this, kind](uint64_t bytes) { return upload(kind, bytes, somebody()); };
        };
        return {
            {"maxStudioPhotoBytes", 1000, 413, one("photo")},
            {"maxStudioSoundBytes", 1100, 413, one("tone")},
            {"maxStudioVideoBytes", 1200, 413, one("film")},
            {"maxStudioStoredBytes", 3000, 413,
             [this](uint64_t bytes) {
                 const Who who = somebody();
                 for (int count = 0; count < 2; ++count) EXPECT_EQ(upload("film", 1000, who).status, 201);
                 return upload("film", bytes - 2000, who);
             }},
            {"maxStudioUploads", 4, 413,
             [this](uint64_t number) {
                 return times(number, [this](const Who& who) { return upload("film", 10, who); });
             }},
        };
    }
    std::vector<Trial> jobs() {
        return {
            {"maxStudioWebhooks", 2, 429,
             [this](uint64_t number) {
                 return times(number, [this](const Who& who) {
                     return sendJson("POST", "/api/v1/webhooks", R"({"url":"http://127.0.0.1/"})", who);
                 });
             }},
            {"maxStudioJobsOfSession", 2, 429,
             [this](uint64_t number) {
                 return times(number, [this](const Who& who) { return ask(kSmall, who); });
             }},
            {"maxStudioJobSeconds", 5, 422,
             [this](uint64_t seconds) {
                 // Half a second, and 30 nanoseconds for each pixel of 90 frames.
                 const uint64_t height = (seconds * 1000 - 500) * 1'000'000 / (90 * 30) / 1000;
                 return ask(
                     "\"size\":{\"width\":1000,\"height\":" + std::to_string(height & ~uint64_t{1}) + "}",
                     somebody());
             }},
            {"maxStudioJobs", 16, 429,
             [this](uint64_t number) {
                 while (waiting_ + 1 < number) EXPECT_EQ(ask(kSmall, somebody()).status, 202);
                 return ask(kSmall, somebody());
             }},
        };
    }

    uint64_t waiting_ = 0;
    int people_ = 0;
};

TEST_F(StudioLimitsTest, HoldToTheLast) {
    std::vector<Trial> trials;
    for (const auto& group : {bodies(), uploads(), jobs()})
        trials.insert(trials.end(), group.begin(), group.end());
    // With clocks, by what the server itself does, or where what they need is there.
    std::set<std::string> tried{"maxStudioUploadsWaiting", "maxStudioStreams",
                                "maxStudioTries",          "maxStudioCodeTries",       // below
                                "maxStudioPreviews",       "maxStudioPreviewSeconds",  // PreviewsTest
                                "maxStudioJobAttempts",                                // JobsTest
                                "maxStudioDevices",                                    // AccessTest
                                "maxStudioConnections",    "maxStudioConnectionsOfAddress",
                                "maxStudioHeadBytes",      "maxStudioHeadSeconds",
                                "maxStudioIdleSeconds",    "minStudioRate",
                                "maxStudioRateSeconds"};  // HttpServerTest, attacks.txt
    for (const Trial& trial : trials) EXPECT_TRUE(tried.insert(trial.limit).second) << trial.limit;
    for (const auto& row : StudioLimits::rows())
        EXPECT_EQ(tried.erase(std::string(row.limit.name)), 1u) << row.limit.name;
    EXPECT_THAT(tried, testing::IsEmpty());

    beginWith(trials);
    for (const Trial& trial : trials) {
        SCOPED_TRACE(trial.limit);
        for (const uint64_t number : {trial.most - 1, trial.most}) {
            const Reply reply = trial.with(number);
            EXPECT_LT(reply.status, 300) << number << ": " << reply.body;
        }
        const Reply beyond = trial.with(trial.most + 1);
        EXPECT_EQ(beyond.status, trial.refused) << beyond.body;
    }
}

TEST_F(StudioLimitsTest, OnesThatWaitOrAreHeard) {
    for (const char* limit :
         {"maxStudioUploadsWaiting=3", "maxStudioStreams=2", "maxStudioTries=4", "maxStudioCodeTries=2"})
        settings.limits.set(limit);
    beginWith({});
    std::vector<std::unique_ptr<HttpClient>> clients;
    const auto open = [&](const std::string& bytes) {
        clients.push_back(std::make_unique<HttpClient>(studio->port()));
        clients.back()->send(bytes);
    };
    for (int count = 0; count < 2; ++count) {
        open("GET /api/v1/events HTTP/1.1\r\n" + hostLine() + me.lines() + "\r\n");
        EXPECT_THAT(clients.back()->readUntil("\r\n\r\n"), testing::HasSubstr(" 200 "));
    }
    EXPECT_EQ(get("/api/v1/events", me).status, 503);

    const auto tryWith = [&](const char* name) {
        return sendJson("POST", "/api/v1/sessions", std::string("{\"") + name + "\":\"000000\"}").status;
    };
    EXPECT_EQ(tryWith("code"), 401);
    EXPECT_EQ(tryWith("code"), 401);
    EXPECT_EQ(tryWith("code"), 429);
    browser();  // who is let in has made no wrong tries
    for (int count = 0; count < 4; ++count) EXPECT_EQ(tryWith("key"), 401);
    EXPECT_EQ(tryWith("key"), 429);

    clients.clear();
    for (int count = 0; count < 4; ++count)
        open("POST /api/v1/uploads HTTP/1.1\r\n" + hostLine() + me.lines() + "Content-Length: 4\r\n\r\nwait");
    const auto answered = [&] {
        return std::ranges::count_if(clients, [](const auto& client) {
            client->hasEnded();
            return client->unread().starts_with("HTTP/1.1 429 ");
        });
    };
    while (answered() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(answered(), 1);
}

TEST(StudioLimitsNamesTest, AreChangedByTheirNames) {
    StudioLimits limits;
    const std::vector<std::string> words{"--no-fence", "--limit", "maxStudioJobs=7", "--limit",
                                         "maxJobMemory=1"};
    limits.setThoseOf(words);
    EXPECT_EQ(limits.jobs, 7u);
    for (const char* wrong :
         {"maxStudioJobs", "maxStudioJobs=0", "maxStudioJobs=-1", "maxStudioJobs=1x", "maxX=1"})
        EXPECT_THROW(limits.set(wrong), platform::Error) << wrong;
}

}  // namespace
}  // namespace multiscene::studio
