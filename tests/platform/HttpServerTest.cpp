#include "platform/http/Server.h"

#include "HttpServerFixture.h"
#include "platform/http/Pace.h"
#include "platform/http/Range.h"
#include "platform/net/HttpDownload.h"

namespace platform::http {
namespace {

TEST_F(HttpServerTest, TakesWhatIsMeantWell) {
    options.hosts.push_back("Studio.example:443");
    start();
    const std::string port = std::to_string(server->port());
    const std::string chunked = "Transfer-Encoding: Chunked\r\n";
    const std::vector<std::pair<std::string, std::string>> taken = {
        {get("/ping"), "pong"},
        {"GET /ping HTTP/1.1\r\nhOsT:LOCALHOST:" + port + "\r\n\r\n", "pong"},
        {"GET /ping HTTP/1.1\r\nHost: [::1]:" + port + "\r\n\r\n", "pong"},
        {"GET /ping HTTP/1.1\r\nHost: studio.example\r\n\r\n", "pong"},
        {get("/ping", "Name: \xe5\x90\x8d\r\nEmpty:\r\nExpect: 100-continue\r\n"), "pong"},
        {get("/ping", "Content-Length: 0\r\n"), "pong"},
        {post("/echo", "Content-Length: 3\r\n", "abc"), "abc"},
        {post("/echo", "Content-Length: 0\r\n"), ""},
        {post("/echo", chunked, "3\r\nabc\r\n00A\r\n0123456789\r\n0\r\n\r\n"), "abc0123456789"},
        {post("/echo", chunked, "0\r\n\r\n"), ""},
        {get("/names/%E4%BD%A0%2C+b/%252e%252e/?q=a+b%26&flag&=x"),
         "/names/\xe4\xbd\xa0,+b/%2e%2e/|q=a b&|flag=|=x"},
        {get("/names/%c2%a9?a=1&&b=2", "Name: a\tb\r\n"), "/names/\xc2\xa9|a=1|b=2"},
        {post("/echo", "Content-Length: 3\r\nContent-Encoding: identity\r\n", "abc"), "abc"},
    };
    HttpClient client(server->port());
    for (const auto& [request, body] : taken) {
        client.send(request);
        const std::string answer = client.readAnswer();
        EXPECT_THAT(answer, AllOf(StartsWith("HTTP/1.1 200 OK\r\n"), testing::EndsWith("\r\n\r\n" + body)))
            << request;
    }
    for (const char* line : {"nosniff", "no-store", "Referrer-Policy: no-referrer", "frame-ancestors 'none'"})
        EXPECT_THAT(ask(get("/ping")), HasSubstr(line));

    // A byte at a time it is the same.
    HttpClient slow(server->port());
    for (const auto& [request, body] : taken) {
        for (const char byte : request) ASSERT_TRUE(slow.send({&byte, 1}));
        EXPECT_THAT(slow.readAnswer(), testing::EndsWith("\r\n\r\n" + body)) << request;
    }

    HttpClient careful(server->port());
    careful.send(post("/echo", "Content-Length: 3\r\nExpect: 100-continue\r\n"));
    EXPECT_EQ(careful.readUntil("\r\n\r\n"), "HTTP/1.1 100 Continue\r\n\r\n");
    careful.send("abc");
    EXPECT_THAT(careful.readAnswer(), StartsWith("HTTP/1.1 200 "));

    HttpClient last(server->port());
    last.send(get("/ping", "Connection: close\r\n") + get("/ping"));
    const std::string answers = last.readToEnd();
    EXPECT_THAT(answers, testing::EndsWith("\r\n\r\npong"));
    EXPECT_EQ(answers.find("HTTP/1.1", 1), std::string::npos) << "a second answer";

    HttpClient old(server->port());
    old.send("GET /ping HTTP/1.0\r\nConnection: keep-alive\r\n" + host() + "\r\n");
    EXPECT_THAT(old.readToEnd(), HasSubstr("pong"));
    EXPECT_THAT(ask(post("/refused", "Content-Length: 107374182400\r\n")), StartsWith("HTTP/1.1 401 "));
}

TEST(HttpPaceTest, EachSpanStandsForItself) {
    const Limits limits;
    const Pace::Time start{};
    Pace pace;
    pace.begin(start, 100);
    EXPECT_FALSE(pace.isTooSlow(start + 4s, 100, limits)) << "too early to tell";
    EXPECT_FALSE(pace.isTooSlow(start + 5s, 100 + 5 * 1024, limits));
    EXPECT_FALSE(pace.isTooSlow(start + 10s, 100'000'000, limits));
    EXPECT_TRUE(pace.isTooSlow(start + 15s, 100'005'000, limits)) << "it was quick once";
}
TEST_F(HttpServerTest, AnUploadIsThereWhenItIsWholeAndGoneWhenItIsCut) {
    start();
    const std::string bytes(300'000, 'x');
    const std::string length = "Content-Length: " + std::to_string(bytes.size()) + "\r\n";
    {
        HttpClient cut(server->port());
        cut.send(post("/upload", length, bytes.substr(1)));
        ASSERT_TRUE(comesTrue([&] { return server->counts().connections == 1; }));
    }
    EXPECT_TRUE(comesTrue([&] { return server->counts().connections == 0 && isFolderEmpty(); }));

    HttpClient endless(server->port());
    endless.send(post("/upload", "Transfer-Encoding: chunked\r\n"));
    const std::string chunk = "493e0\r\n" + bytes + "\r\n";
    int chunks = 0;
    while (chunks < 1000 && endless.send(chunk) && endless.unread().empty() && !endless.hasEnded()) ++chunks;
    EXPECT_LT(chunks, 1000);
    EXPECT_TRUE(comesTrue([&] { return isFolderEmpty(); }));

    EXPECT_THAT(ask(post("/upload", length, bytes)), testing::EndsWith("300000"));
    EXPECT_EQ(fs::file_size(folder / "upload"), bytes.size());
    fs::remove_all(folder);
    EXPECT_THAT(ask(post("/upload", length, bytes)), StartsWith("HTTP/1.1 500 ")) << "there is no folder";
    expectPong();
}

TEST(HttpRangeTest, OneRangeOrTheWholeOrNone) {
    struct Row {
        const char* value;
        uint64_t size;
        Range::Kind kind;
        uint64_t first = 0, length = 0;
    };
    using enum Range::Kind;
    for (const Row& row : std::vector<Row>{
             {"", 10, Whole},
             {"bytes=0-0", 10, Part, 0, 1},
             {"bytes=2-5", 10, Part, 2, 4},
             {"bytes=2-", 10, Part, 2, 8},
             {"BYTES=2-", 10, Part, 2, 8},
             {"bytes=2-100", 10, Part, 2, 8},
             {"bytes=-3", 10, Part, 7, 3},
             {"bytes=-100", 10, Part, 0, 10},
             {"bytes=0-18446744073709551616", 10, Part, 0, 10},
             {"bytes=-18446744073709551616", 10, Part, 0, 10},
             {"bytes=10-", 10, Unsatisfiable},
             {"bytes=18446744073709551616-", 10, Unsatisfiable},
             {"bytes=-0", 10, Unsatisfiable},
             {"bytes=0-", 0, Unsatisfiable},
             {"bytes=-5", 0, Unsatisfiable},
             {"bytes=5-2", 10, Whole},
             {"bytes=0-1,3-4", 10, Whole},
             {"bytes=-", 10, Whole},
             {"bytes=--5", 10, Whole},
             {"bytes= 0-1", 10, Whole},
             {"bytes=0x1-5", 10, Whole},
             {"bytes=1", 10, Whole},
             {"lines=0-1", 10, Whole},
         }) {
        const Range range = readRange(row.value, row.size);
        EXPECT_EQ(range.kind, row.kind) << row.value;
        EXPECT_EQ(range.first, row.first) << row.value;
        EXPECT_EQ(range.length, row.length) << row.value;
    }
}

TEST_F(HttpServerTest, SendsFilesWholeInPartOrNotAgain) {
    writeFile(10);
    start();
    struct Row {
        const char* lines;
        int status;
        const char* header;
        const char* body;
    };
    for (const Row& row : std::vector<Row>{
             {"", 200, "Content-Length: 10", "0123456789"},
             {"Range: bytes=2-5\r\n", 206, "Content-Range: bytes 2-5/10", "2345"},
             {"Range: bytes=10-\r\n", 416, "Content-Range: bytes */10", ""},
             {"Range: bytes=0-1,3-4\r\n", 200, "Accept-Ranges: bytes", "0123456789"},
             {"Range: bytes=2-5\r\nIf-Range: \"v1\"\r\n", 206, "ETag: \"v1\"", "2345"},
             {"Range: bytes=2-5\r\nIf-Range: \"v0\"\r\n", 200, "Cache-Control: private", "0123456789"},
             {"If-None-Match: \"v0\", W/\"v1\"\r\n", 304, "ETag: \"v1\"", ""},
             {"If-None-Match: \"v0\"\r\n", 200, "Content-Type: video/mp4", "0123456789"},
         }) {
        const std::string answer = ask(get("/file", row.lines));
        EXPECT_THAT(answer, AllOf(StartsWith("HTTP/1.1 " + std::to_string(row.status)), HasSubstr(row.header),
                                  testing::EndsWith(std::string("\r\n\r\n") + row.body)))
            << row.lines;
    }
    HttpClient head(server->port());
    head.send("HEAD /file HTTP/1.1\r\n" + host() + "\r\n" + get("/ping"));
    EXPECT_THAT(head.readAnswer(false), HasSubstr("Content-Length: 10\r\n"));
    EXPECT_THAT(head.readAnswer(), HasSubstr("pong")) << "HEAD has no body";

    writeFile(20'000'000);
    EXPECT_THAT(ask(get("/file")).size(), testing::Gt(20'000'000u));
    EXPECT_THROW(Answer(200).with("A", "b\r\nSet-Cookie: c"), Error);
    EXPECT_THROW(Answer(200).with("content-length", "3"), Error);
}

TEST_F(HttpServerTest, IsAnsweredLaterFromAnotherThreadOnce) {
    start();
    HttpClient client(server->port());
    client.send(get("/slow") + get("/slow") + get("/ping"));
    ASSERT_TRUE(comesTrue([&] { return site.countOf(site.waiting) == 1; }));
    expectPong();
    std::thread([&] { site.waiting[0].answer(Answer::text(200, "first")); }).join();
    ASSERT_TRUE(comesTrue([&] { return site.countOf(site.waiting) == 2; }));
    site.waiting[0].answer(Answer::text(200, "first again"));
    site.waiting[1].answer(Answer::text(200, "second"));
    EXPECT_THAT(client.readAnswer(), testing::EndsWith("first"));
    EXPECT_THAT(client.readAnswer(), testing::EndsWith("second"));
    EXPECT_THAT(client.readAnswer(), testing::EndsWith("pong"));

    EXPECT_THAT(ask(get("/drop")), StartsWith("HTTP/1.1 500 "));
    EXPECT_THAT(ask(get("/throw")), StartsWith("HTTP/1.1 500 "));
    EXPECT_EQ(site.gone, 0);
    {
        HttpClient leaves(server->port());
        leaves.send(get("/slow"));
        ASSERT_TRUE(comesTrue([&] { return site.countOf(site.waiting) == 3; }));
        EXPECT_FALSE(site.waiting[2].isGone());
    }
    EXPECT_TRUE(comesTrue([&] { return site.gone == 1; }));

    HttpClient halfClosed(server->port());
    halfClosed.send(get("/slow"));
    halfClosed.endInput();
    ASSERT_TRUE(comesTrue([&] { return site.gone == 2; }));
    site.waiting[3].answer(Answer::text(200, "still read"));
    EXPECT_THAT(halfClosed.readToEnd(), HasSubstr("still read"));

    HttpClient last(server->port());
    last.send(get("/slow"));
    ASSERT_TRUE(comesTrue([&] { return site.countOf(site.waiting) == 5; }));
    server.reset();
    site.waiting[4].answer(Answer::text(200, "too late"));
    EXPECT_EQ(last.readToEnd(), "");
}
TEST_F(HttpServerTest, StopLetsEndWhatRunsAndCutsWhatDoesNotEnd) {
    for (const bool ends : {true, false}) {
        site.waiting.clear();
        site.streams.clear();
        start();
        HttpClient upload(server->port()), stream(server->port()), slow(server->port()), idle(server->port());
        stream.send(get("/events"));
        slow.send(get("/slow"));
        upload.send(post("/upload", "Content-Length: 6\r\n", "abc"));
        ASSERT_THAT(stream.readUntil("\r\n\r\n"), HasSubstr("200 OK"));
        ASSERT_TRUE(comesTrue([&] { return site.countOf(site.waiting) == 1; }));
        std::thread stopping([&] { server->stop(ends ? 60s : 200ms); });
        EXPECT_EQ(stream.readToEnd(), "");
        EXPECT_EQ(idle.readToEnd(), "");
        EXPECT_FALSE(HttpClient(server->port()).isConnected());
        EXPECT_THAT(upload.readToEnd(), AllOf(HasSubstr("503 "), HasSubstr("Connection: close")));
        if (ends) site.waiting[0].answer(Answer::text(200, "in time"));
        stopping.join();
        EXPECT_EQ(server->counts().connections, 0u);
        EXPECT_THAT(slow.readToEnd(), ends ? HasSubstr("in time") : HasSubstr(""));
        EXPECT_TRUE(isFolderEmpty());
        EXPECT_FALSE(site.streams[0].isOpen());
    }
}

TEST_F(HttpServerTest, SaysWhyItCannotListen) {
    start();
    const auto messageFor = [&](ServerOptions wanted) -> std::string {
        try {
            Server(std::move(wanted), site);
            return "";
        } catch (const Error& error) {
            return error.what();
        }
    };
    ServerOptions taken, nowhere, keyless;
    taken.port = server->port();
    EXPECT_EQ(messageFor(taken),
              "127.0.0.1:" + std::to_string(taken.port) + ": cannot listen: another program has this port");
    nowhere.addresses = {"studio"};
    EXPECT_THAT(messageFor(nowhere), HasSubstr("not an address"));
    keyless.certificateFile = (folder / "none.pem").string();
    EXPECT_THAT(messageFor(keyless), HasSubstr("none.pem: no certificate"));

    ServerOptions both;
    both.addresses = {"::"};
    const Server everywhere(both, site);
    HttpClient client(everywhere.port());
    client.send("GET /ping HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(everywhere.port()) + "\r\n\r\n");
    EXPECT_THAT(client.readAnswer(), HasSubstr("pong"));
}

TEST_F(HttpServerTest, SpeaksTls) {
    const std::string certificate = (folder / "cert.pem").string(), key = (folder / "key.pem").string();
    const std::string make =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 -subj "
        "/CN=localhost "
        "-addext subjectAltName=DNS:localhost -keyout " +
        key + " -out " + certificate + " 2>/dev/null";
    ASSERT_EQ(std::system(make.c_str()), 0);
    writeFile(5'000'000);
    options.certificateFile = certificate;
    options.keyFile = key;
    start();
    ::setenv("SSL_CERT_FILE", certificate.c_str(), 1);
    ::setenv("no_proxy", "*", 1);
    const std::string address = "https://localhost:" + std::to_string(server->port());
    EXPECT_EQ(downloadToFile(address + "/file", folder / "copy").bytes, 5'000'000u);
    ::unsetenv("SSL_CERT_FILE");

    const std::string old = "openssl s_client -tls1_1 -cipher ALL@SECLEVEL=0 -connect localhost:" +
                            std::to_string(server->port()) + " </dev/null >/dev/null 2>&1";
    EXPECT_NE(std::system(old.c_str()), 0);
    EXPECT_THAT(ask(get("/ping")), Not(HasSubstr("pong"))) << "plain text to a TLS port";

    options.keyFile = certificate;
    EXPECT_THROW(Server(options, site), Error);
}

}  // namespace
}  // namespace platform::http
