// A server whose clients are many, slow, or take all that it has.
#include <sys/resource.h>

#include "HttpServerFixture.h"
#include "platform/fence/WorkerLimits.h"

namespace platform::http {
namespace {

TEST_F(HttpServerTest, SlowClientsAreClosedWhileOthersAreAnswered) {
    writeFile(64 << 20);
    options.limits.headTime = options.limits.keepAlive = options.limits.rateSpan = 500ms;
    start();
    HttpClient silent(server->port()), head(server->port()), kept(server->port()), body(server->port());
    HttpClient reader(server->port(), 4096), stream(server->port());
    head.send("GET /ping HTTP/1.1\r\nA: ");
    kept.send(get("/ping"));
    body.send(post("/upload", "Content-Length: 5000\r\n", "abc"));
    reader.send(get("/file"));
    stream.send(get("/events"));
    EXPECT_TRUE(comesTrue([&] {
        expectPong();
        head.send("a");  // what comes keeps nothing open
        body.send("a");
        return silent.hasEnded() && head.hasEnded() && kept.hasEnded() && body.hasEnded();
    }));
    EXPECT_THAT(head.unread(), StartsWith("HTTP/1.1 408 "));
    EXPECT_THAT(body.unread(), StartsWith("HTTP/1.1 408 "));
    EXPECT_THAT(kept.unread(), StartsWith("HTTP/1.1 200 "));
    // The kernel would give it up, too, after half a minute.
    EXPECT_TRUE(comesTrue([&] { return server->counts().connections == 1; }, 20s)) << "the reader is there";
    EXPECT_LT(reader.readToEnd().size(), size_t(64) << 20);
    EXPECT_FALSE(stream.hasEnded()) << "nothing was to be sent";
}

uint64_t residentBytes() {
    uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return pages * static_cast<uint64_t>(::sysconf(_SC_PAGESIZE));
}

TEST_F(HttpServerTest, FiftySlowReadersOfABigFileHoldNobodyUp) {
    constexpr uint64_t size = 256 << 20;
    writeFile(size);
    start();
    HttpClient kept(server->port());
    const uint64_t before = residentBytes();
    std::vector<std::unique_ptr<HttpClient>> readers;
    for (int i = 0; i < 50; ++i) {
        readers.push_back(std::make_unique<HttpClient>(server->port(), 4096));
        readers.back()->send(get("/file"));
    }
    auto longest = 0ms;
    for (int round = 0; round < 120; ++round) {
        for (const auto& each : readers) ASSERT_TRUE(each->readSome(1000));
        const auto asked = std::chrono::steady_clock::now();
        kept.send(get("/ping"));
        ASSERT_THAT(kept.readAnswer(), HasSubstr("pong"));
        expectPong();
        longest = std::max(longest, std::chrono::duration_cast<std::chrono::milliseconds>(
                                        std::chrono::steady_clock::now() - asked));
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_LT(longest, 5s);
    EXPECT_LT(residentBytes(), before + (128 << 20)) << "what nobody takes is not read ahead";
    for (const auto& each : readers) EXPECT_GT(each->unread().size(), 20'000u);
    EXPECT_EQ(server->counts().connections, 51u);
}

TEST_F(HttpServerTest, WithoutDescriptorsItWaitsAndGoesOn) {
    start();
    HttpClient known(server->port());
    known.send(get("/ping"));
    ASSERT_THAT(known.readAnswer(), HasSubstr("pong"));
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    const auto next = static_cast<rlim_t>(openFile("/dev/null", O_RDONLY).descriptor());
    const rlimit few{next + 1, usual.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    HttpClient waiting(server->port());  // takes the last one
    waiting.send(get("/ping"));
    const std::clock_t begun = std::clock();
    for (int round = 0; round < 20; ++round) {
        std::this_thread::sleep_for(50ms);
        known.send(get("/ping"));
        EXPECT_THAT(known.readAnswer(), HasSubstr("pong"));
    }
    EXPECT_LT(std::clock() - begun, CLOCKS_PER_SEC / 4) << "it tries again and again";
    EXPECT_FALSE(waiting.hasEnded());
    EXPECT_EQ(waiting.unread(), "");
    if (!isSanitized()) {  // a sanitizer needs descriptors to look at memory
        known.send(post("/upload", "Content-Length: 3\r\n", "abc"));
        EXPECT_THAT(known.readAnswer(), StartsWith("HTTP/1.1 507 "));
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_THAT(waiting.readAnswer(), HasSubstr("pong"));
    EXPECT_THAT(ask(post("/upload", "Content-Length: 3\r\n", "abc")), StartsWith("HTTP/1.1 201 "));
}

TEST_F(HttpServerTest, WhoWaitsMakesRoomForWhoAsks) {
    options.limits.connectionsPerAddress = 3;
    options.limits.headTime = 10min;
    start();
    HttpClient first(server->port());
    ASSERT_TRUE(comesTrue([&] { return server->counts().connections == 1; }));
    HttpClient second(server->port()), third(server->port());
    ASSERT_TRUE(comesTrue([&] { return server->counts().connections == 3; }));
    expectPong();
    EXPECT_TRUE(comesTrue([&] { return first.hasEnded(); }));

    std::vector<std::unique_ptr<HttpClient>> busy;
    for (int i = 0; i < 3; ++i) {
        busy.push_back(std::make_unique<HttpClient>(server->port()));
        busy.back()->send(get("/slow"));
        ASSERT_TRUE(comesTrue([&] { return site.countOf(site.waiting) == busy.size(); }));
    }
    EXPECT_EQ(ask(get("/ping")), "");
    EXPECT_FALSE(busy[0]->hasEnded());
    EXPECT_GE(server->counts().refusals, 1u);
}

TEST_F(HttpServerTest, TwoHundredStreamsHearEverythingAndASlowOneIsDropped) {
    constexpr size_t count = 200;
    options.limits.streams = count + 1;
    options.limits.streamBytes = 100'000;
    options.limits.streamPulse = 1s;
    start();
    std::vector<std::unique_ptr<HttpClient>> clients;
    for (size_t i = 0; i < count; ++i) {
        clients.push_back(std::make_unique<HttpClient>(server->port()));
        clients.back()->send(get("/events", i == 0 ? "Last-Event-ID: 41\r\n" : ""));
        EXPECT_THAT(clients.back()->readUntil("\r\n\r\n"), HasSubstr("text/event-stream"));
    }
    EXPECT_EQ(site.lastIds[0], "41");
    auto slow = std::make_unique<HttpClient>(server->port(), 4096);
    slow->send(get("/events"));
    ASSERT_TRUE(comesTrue([&] { return server->counts().streams == count + 1; }));
    EXPECT_THAT(ask(get("/events")), StartsWith("HTTP/1.1 503 "));

    const EventStream toSlow = site.streams[count];
    const std::string much(10'000, 'x');
    int sent = 0;
    while (sent < 10'000 && toSlow.send({much, "", ""})) ++sent;
    EXPECT_GE(sent, 9) << "what fits is kept";
    EXPECT_LT(sent, 10'000);
    EXPECT_TRUE(comesTrue([&] { return !toSlow.isOpen(); }));

    for (int i = 0; i < 30; ++i) {
        ASSERT_TRUE(site.streams[1].send({much, "", ""})) << "what was taken counts no more";
        EXPECT_EQ(clients[1]->readUntil("\n\n"), "data: " + much + "\n\n");
    }

    for (size_t i = 0; i < count; ++i) {
        EXPECT_TRUE(site.streams[i].send({"one\ntwo\r\n", "job", "42", 2000ms}));
        EXPECT_THROW(site.streams[i].send({"", "a\nb", ""}), Error);
    }
    for (const auto& client : clients)
        EXPECT_EQ(client->readUntil("\n\n"),
                  "retry: 2000\nid: 42\nevent: job\ndata: one\ndata: two\ndata: \n\n");
    EXPECT_EQ(clients[0]->readUntil(":\n\n"), ":\n\n");
    expectPong();

    const int before = site.closedStreams;
    clients.pop_back();
    EXPECT_TRUE(comesTrue([&] { return site.closedStreams == before + 1; }));
    site.streams[0].send({"last", "", ""});
    site.streams[0].close();
    EXPECT_THAT(clients[0]->readToEnd(), testing::EndsWith("data: last\n\n"));
}

}  // namespace
}  // namespace platform::http
