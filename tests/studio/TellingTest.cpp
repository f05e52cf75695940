// What the studio tells other programs: webhooks, numbers, its log.
#include <arpa/inet.h>

#include <mutex>

#include "platform/crypto/Base64.h"
#include "platform/crypto/Hmac.h"
#include "platform/http/Server.h"
#include "platform/net/PublicAddress.h"
#include "studio/webhooks/WebhookSender.h"
#include "tests/studio/JobsFixture.h"

namespace multiscene::studio {
namespace {

using platform::Value;
using testing::HasSubstr;
using testing::Not;

/// Hears deliveries, and answers as it is told.
class Receiver : public platform::http::Handler {
  public:
    Receiver() { server_ = std::make_unique<platform::http::Server>(platform::http::ServerOptions{}, *this); }
    ~Receiver() override { server_.reset(); }

    std::string url() const { return "http://127.0.0.1:" + std::to_string(server_->port()) + "/hook"; }
    std::vector<platform::http::Request> heard(size_t atLeast) {
        for (int tries = 0; tries < 500; ++tries) {
            {
                const std::lock_guard lock(mutex_);
                if (requests_.size() >= atLeast) return std::exchange(requests_, {});
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return {};
    }

    platform::http::Expectation expect(const platform::http::RequestHead&) override {
        return platform::http::BodyInMemory{1 << 20};
    }
    void handle(platform::http::Request request, platform::http::Responder responder) override {
        const std::lock_guard lock(mutex_);
        requests_.push_back(std::move(request));
        responder.answer(platform::http::Answer(status));
    }

    std::atomic<int> status{204};

  private:
    std::mutex mutex_;
    std::vector<platform::http::Request> requests_;
    std::unique_ptr<platform::http::Server> server_;
};

using TellingTest = JobsFixture;

bool isPublic(const char* text) {
    sockaddr_in6 six{};
    sockaddr_in four{};
    six.sin6_family = AF_INET6;
    four.sin_family = AF_INET;
    if (::inet_pton(AF_INET, text, &four.sin_addr) == 1)
        return platform::isPublicAddress(reinterpret_cast<const sockaddr&>(four));
    EXPECT_EQ(::inet_pton(AF_INET6, text, &six.sin6_addr), 1) << text;
    return platform::isPublicAddress(reinterpret_cast<const sockaddr&>(six));
}

TEST(PublicAddressTest, KnowsWhatIsNotTheInternet) {
    for (const char* each : {"0.0.0.0",
                             "10.1.2.3",
                             "100.64.0.1",
                             "127.0.0.1",
                             "127.255.0.1",
                             "169.254.169.254",
                             "172.16.0.1",
                             "172.31.255.255",
                             "192.168.1.1",
                             "198.18.0.1",
                             "224.0.0.1",
                             "255.255.255.255",
                             "::",
                             "::1",
                             "fe80::1",
                             "fc00::1",
                             "fd12::1",
                             "ff02::1",
                             "::ffff:127.0.0.1",
                             "::ffff:10.0.0.1",
                             "64:ff9b::a9fe:a9fe",
                             "2002:7f00:1::",
                             "2001:db8::1",
                             "::127.0.0.1"})
        EXPECT_FALSE(isPublic(each)) << each;
    for (const char* each : {"1.1.1.1", "172.15.0.1", "172.32.0.1", "100.128.0.1", "2606:4700::1111",
                             "::ffff:8.8.8.8", "64:ff9b::808:808"})
        EXPECT_TRUE(isPublic(each)) << each;
}

/// The example of the standard's own text.
TEST(WebhookSenderTest, SignsAsTheStandardSays) {
    const auto headers = signedHeaders({"whsec_MfKQ9r8GKYqrTwjUPD8ILPZIo2LaLaSw"},
                                       "msg_p5jXN8AQM9LWM0D4loKWxJek", 1614265330, R"({"test": 2432232314})");
    EXPECT_EQ(headers.back().second, "v1,g0hM9SsE+OTPJTGt/tmIKtSyZlE3uFJELVlNIOLJ1OE=");
}

TEST_F(TellingTest, AServerIsToldOfTheEndOfAJobUntilItTakesIt) {
    Receiver receiver;
    settings.webhookAllow = {"127.0.0.1"};
    begin();
    const Value hook =
        sendJson("POST", "/api/v1/webhooks", "{\"url\":\"" + receiver.url() + "\"}", me).json();
    const Value rotated =
        sendJson("POST", "/api/v1/webhooks/" + hook.string("id") + "/rotation", "{}", me).json();
    const std::vector<std::string> secrets{rotated.string("secret"), hook.string("secret")};
    EXPECT_NE(secrets[0], secrets[1]);
    receiver.status = 500;
    const std::string id =
        submit(std::string(kSmall) + ",\"callback\":\"" + receiver.url() + "\"").string("id");
    const auto first = receiver.heard(2);
    ASSERT_EQ(first.size(), 2u);  // the webhook and the callback
    receiver.status = 204;
    const auto again = receiver.heard(2);  // five seconds later
    ASSERT_EQ(again.size(), 2u);
    const auto header = [](const platform::http::Request& request, const char* name) {
        return request.head.header(name);
    };
    const std::string callbackSecret = get("/api/v1/webhooks", me).json().string("callbackSecret");
    int known = 0;
    for (const auto& request : again) {
        const Value body = platform::parseJson(request.body, "body");
        EXPECT_EQ(body.string("type"), "job.done");
        EXPECT_EQ(body["data"].string("id"), id);
        for (const auto& each : {secrets, {callbackSecret}}) {
            const auto expected =
                signedHeaders(each, header(request, "webhook-id"),
                              std::stoll(header(request, "webhook-timestamp")), request.body);
            known += expected.back().second == header(request, "webhook-signature");
        }
    }
    EXPECT_EQ(known, 2);
    const std::string one = "/api/v1/webhooks/" + hook.string("id");
    EXPECT_EQ(ask("POST", one + "/test", me).status, 202);
    receiver.status = 410;
    EXPECT_EQ(receiver.heard(1).size(), 1u);
    Value deliveries;
    for (int tries = 0; tries < 200; ++tries) {
        deliveries = get(one + "/deliveries", me).json();
        if (deliveries.array("deliveries")[0].integer("attempt") == 1) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ASSERT_EQ(deliveries.array("deliveries").size(), 2u);
    EXPECT_EQ(deliveries.array("deliveries")[1].integer("attempt"), 2);
    EXPECT_EQ(deliveries.array("deliveries")[1].integer("status"), 204);
    EXPECT_THAT(get("/api/v1/webhooks", me).body, Not(HasSubstr(secrets[0])));
    EXPECT_EQ(ask("DELETE", one, me).status, 204);
}

TEST_F(TellingTest, WhatIsNotOfTheInternetIsNotReached) {
    Receiver receiver;
    begin();
    const Value hook =
        sendJson("POST", "/api/v1/webhooks", "{\"url\":\"" + receiver.url() + "\"}", me).json();
    const std::string one = "/api/v1/webhooks/" + hook.string("id");
    EXPECT_EQ(ask("POST", one + "/test", me).status, 202);
    Value told;
    for (int tries = 0; tries < 200 && told.integer("attempt") == 0; ++tries) {
        const Value all = get(one + "/deliveries", me).json();
        told = all.array("deliveries")[0];
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(told.string("message"), "its address is not one of the Internet");
    EXPECT_TRUE(told["next"].isNone());
    EXPECT_EQ(sendJson("POST", "/api/v1/webhooks", R"({"url":"file:///etc/passwd"})", me).status, 422);
}

TEST_F(TellingTest, NumbersAndLogNameNobody) {
    settings.metricsPort = 0;
    settings.accessLog = home / "access.log";
    begin();
    const std::string id = submit(kSmall).string("id");
    EXPECT_EQ(waitFor(id).string("state"), "done");
    const Value preview = sendJson("POST", "/api/v1/previews", R"({"template":1000,"width":64})", me).json();
    EXPECT_EQ(
        sendJson("POST", "/api/v1/previews/" + preview.string("id") + "/still", R"({"frame":1})", me).status,
        200);
    EXPECT_EQ(uploadBytes("no photo").status, 415);
    platform::test::HttpClient client(studio->metricsPort());
    client.send("GET /metrics HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(studio->metricsPort()) +
                "\r\n\r\n");
    const std::string numbers = client.readAnswer();
    for (const char* line :
         {"multiscene_jobs{state=\"done\"} 1\n",
          "multiscene_jobs_finished_total{result=\"done\",reason=\"\"} 1\n",
          "multiscene_frames_rendered_total 90\n", "multiscene_job_duration_seconds_count 1\n",
          "http_request_duration_seconds_bucket{route=\"/api/v1/jobs\",code=\"202\",le=\"+Inf\"} 1\n",
          "multiscene_job_stage_seconds_total{stage=\"publishing\"} ",
          "multiscene_worker_exits_total{work=\"job\",cause=\"done\"} 1\n", "multiscene_previews 1\n",
          "multiscene_preview_workers 1\n", "multiscene_preview_still_seconds_count 1\n",
          "multiscene_worker_exits_total{work=\"intake\",cause=\"input\"} 1\n",
          "multiscene_problems_total{code=\"not-media\"} 1\n", "multiscene_uploads_bytes_total 8\n",
          "process_resident_memory_bytes "})
        EXPECT_THAT(numbers, HasSubstr(line));
    EXPECT_THAT(numbers, Not(HasSubstr(id)));
    const std::string log = test::contentOf(home / "access.log");
    EXPECT_THAT(log, HasSubstr(" POST /api/v1/jobs 202 "));
    EXPECT_THAT(log, Not(HasSubstr(id)));
    EXPECT_EQ(get("/metrics").status, 404);
}

}  // namespace
}  // namespace multiscene::studio
