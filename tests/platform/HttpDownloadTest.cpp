#include "platform/net/HttpDownload.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <fstream>

#include "FaultyServer.h"
#include "platform/base/Clock.h"
#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using test::FaultyServer;
using testing::HasSubstr;
using testing::Not;

std::string answer(const std::string& status, const std::string& headers, const std::string& body) {
    return "HTTP/1.1 " + status + "\r\nConnection: close\r\n" + headers + "\r\n" + body;
}
std::string ok(const std::string& body, const std::string& headers = "") {
    return answer("200 OK", "Content-Length: " + std::to_string(body.size()) + "\r\n" + headers, body);
}

class HttpDownloadTest : public testing::Test {
  protected:
    void SetUp() override {
        ::setenv("no_proxy", "*", 1);
        options.retryDelaySeconds = 0.01;
        options.attempts = 4;
    }
    void TearDown() override { fs::remove(file); }

    std::string content() const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// The kind of the error, or nothing when the file arrived.
    std::optional<ErrorKind> failure(const std::string& url) {
        try {
            downloadToFile(url, file, options);
            return std::nullopt;
        } catch (const Error& error) {
            message = error.what();
            EXPECT_FALSE(fs::exists(file)) << "half a file stays behind";
            return error.kind();
        }
    }

    fs::path file = fs::temp_directory_path() / ("download-test-" + uniqueIdentifier());
    HttpDownloadOptions options;
    std::string message;
};

TEST_F(HttpDownloadTest, FetchesAndTellsItsProgress) {
    FaultyServer server({{ok("the archive")}, {ok("")}});
    uint64_t lastReceived = 0, lastTotal = 0;
    options.progress = [&](uint64_t received, uint64_t total) { lastReceived = received, lastTotal = total; };
    const HttpDownloadResult result = downloadToFile(server.url(), file, options);
    EXPECT_EQ(content(), "the archive");
    EXPECT_EQ(result.bytes, 11u);
    EXPECT_EQ(lastReceived, 11u);
    EXPECT_EQ(lastTotal, 11u);
    EXPECT_EQ(downloadToFile(server.url(), file, options).bytes, 0u);
}

TEST_F(HttpDownloadTest, GoesOnWhereABrokenTransferStopped) {
    const std::string head = "Content-Length: 10\r\nETag: \"v1\"\r\n";
    FaultyServer server(
        {{answer("200 OK", head, "0123")},
         {answer("206 Partial Content", "Content-Length: 6\r\nContent-Range: bytes 4-9/10\r\n", "456")},
         {answer("206 Partial Content", "Content-Length: 3\r\nContent-Range: bytes 7-9/10\r\n", "789")}});
    EXPECT_EQ(downloadToFile(server.url(), file, options).connections, 3);
    EXPECT_EQ(content(), "0123456789");
    EXPECT_THAT(server.requests()[1], HasSubstr("Range: bytes=4-\r\n"));
    EXPECT_THAT(server.requests()[1], HasSubstr("If-Range: \"v1\"\r\n"));
    EXPECT_THAT(server.requests()[2], HasSubstr("Range: bytes=7-\r\n"));
}

TEST_F(HttpDownloadTest, StartsAgainWhenTheFileHasChangedOrHasNoVersion) {
    const std::string cut = "Content-Length: 10\r\nETag: \"v1\"\r\n";
    FaultyServer changed({{answer("200 OK", cut, "0123")}, {ok("abcdef", "ETag: \"v2\"\r\n")}});
    downloadToFile(changed.url(), file, options);
    EXPECT_EQ(content(), "abcdef");

    for (const char* version : {"", "ETag: W/\"v1\"\r\n"}) {
        FaultyServer unnamed({{answer("200 OK", std::string("Content-Length: 10\r\n") + version, "0123")},
                              {ok("0123456789")}});
        downloadToFile(unnamed.url(), file, options);
        EXPECT_EQ(content(), "0123456789");
        EXPECT_THAT(unnamed.requests()[1], Not(HasSubstr("Range:")));
    }

    FaultyServer shrunk({{answer("200 OK", cut, "0123")}, {answer("416 Range", "", "")}, {ok("ab")}});
    downloadToFile(shrunk.url(), file, options);
    EXPECT_EQ(content(), "ab");

    // Whoever does not look at "If-Range" sends a part of whatever the file is now.
    for (const char* part :
         {"ETag: \"v2\"\r\nContent-Range: bytes 4-9/10\r\n", "Content-Range: bytes 4-9/12\r\n",
          "Content-Range: bytes 0-9/10\r\n", "Content-Range: bytes 4-9/*\r\nETag: \"v2\"\r\n"}) {
        FaultyServer other(
            {{answer("200 OK", cut, "0123")}, {answer("206 Partial", part, "456789")}, {ok("abcdef")}});
        EXPECT_EQ(failure(other.url()), std::nullopt) << part;
        EXPECT_EQ(content(), "abcdef") << part;
        EXPECT_THAT(other.requests()[2], Not(HasSubstr("Range:")));
    }
    // Where the time of the last change alone tells versions apart.
    const std::string dated = "Content-Length: 10\r\nLast-Modified: Mon, 02 Mar 2026 10:00:00 GMT\r\n";
    for (const auto& [date, whole] :
         {std::pair{"Last-Modified: Mon, 02 Mar 2026 10:00:00 GMT\r\n", "0123456789"},
          std::pair{"", "0123456789"},
          std::pair{"Last-Modified: Tue, 03 Mar 2026 10:00:00 GMT\r\n", "abcdef"}}) {
        FaultyServer other(
            {{answer("200 OK", dated, "0123")},
             {answer("206 Partial", "Content-Range: bytes 4-9/10\r\n" + std::string(date), "456789")},
             {ok("abcdef")}});
        EXPECT_EQ(failure(other.url()), std::nullopt) << date;
        EXPECT_EQ(content(), whole) << date;
    }
    FaultyServer unasked({{answer("206 Partial", "Content-Range: bytes 0-3/*\r\n", "0123")}});
    EXPECT_EQ(failure(unasked.url()), ErrorKind::Failed);
}

TEST_F(HttpDownloadTest, AnErrorPageIsNoFile) {
    FaultyServer missing({{answer("404 Not Found", "Content-Length: 4\r\n", "oops")}});
    EXPECT_EQ(failure(missing.url()), ErrorKind::Failed);
    EXPECT_THAT(message, HasSubstr("404: there is no file at this address"));

    FaultyServer busy({{answer("503 Busy", "", "wait")}, {ok("done")}});
    EXPECT_EQ(failure(busy.url()), std::nullopt);
    EXPECT_EQ(content(), "done");

    FaultyServer down({{answer("500 E", "", "")}, {answer("500 E", "", "")}, {""}, {"HTTP/1.1 2"}});
    EXPECT_EQ(failure(down.url()), ErrorKind::Transient);
}

TEST_F(HttpDownloadTest, FollowsRedirectsWithinHttpOnly) {
    FaultyServer goal({{ok("here")}});
    FaultyServer signpost(
        {{answer("302 Found", "Location: " + goal.url() + "\r\nContent-Length: 4\r\n", "page")}});
    EXPECT_EQ(downloadToFile(signpost.url(), file, options).finalUrl, goal.url());
    EXPECT_EQ(content(), "here");

    for (const char* target : {"file:///etc/passwd", "ftp://127.0.0.1/x"}) {
        FaultyServer trap({{answer("302 Found", std::string("Location: ") + target + "\r\n", "")}});
        EXPECT_EQ(failure(trap.url()), ErrorKind::Failed) << target;
    }
    FaultyServer circle(
        std::vector<test::FaultyAnswer>(8, {answer("302 Found", "Location: /again\r\n", "")}));
    EXPECT_EQ(failure(circle.url()), ErrorKind::Failed);
    EXPECT_EQ(failure("file:///etc/passwd"), ErrorKind::Usage);
}

TEST_F(HttpDownloadTest, TriesAndFollowsAsOftenAsTheTableSays) {
    const auto arrives = [&](size_t count, const std::string& before) {
        std::vector<test::FaultyAnswer> answers(count, {before});
        answers.push_back({ok("here")});
        FaultyServer server(std::move(answers));
        return !failure(server.url());
    };
    constexpr size_t tries = limitOf("maxDownloadTries"), hops = limitOf("maxRedirects");
    options.attempts = HttpDownloadOptions().attempts;
    for (const size_t failed : {tries - 2, tries - 1, tries})
        EXPECT_EQ(arrives(failed, answer("500 E", "", "")), failed < tries) << failed;
    options.attempts = 1;
    for (const size_t signposts : {hops - 1, hops, hops + 1})
        EXPECT_EQ(arrives(signposts, answer("302 Found", "Location: /again\r\n", "")), signposts <= hops)
            << signposts;
}

/// A port whose queue is full takes no further connection and says nothing.
TEST_F(HttpDownloadTest, AServerThatDoesNotAnswerIsGivenUp) {
    const FileHandle listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(::bind(listener.descriptor(), generic, size), 0);
    ASSERT_EQ(::listen(listener.descriptor(), 0), 0);
    ASSERT_EQ(::getsockname(listener.descriptor(), generic, &size), 0);
    std::vector<FileHandle> waiting;
    for (int count = 0; count < 4; ++count) {
        waiting.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        (void)::connect(waiting.back().descriptor(), generic, size);
    }
    options.attempts = 1;
    options.connectTimeoutSeconds = 1;
    const double start = monotonicSeconds();
    EXPECT_EQ(failure("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/file.zip"),
              ErrorKind::Transient);
    EXPECT_LT(monotonicSeconds() - start, 10);
}

TEST_F(HttpDownloadTest, StopsAtItsLimitsAndWhenAsked) {
    options.maxBytes = 8;
    FaultyServer stated({{ok("0123456789")}});
    EXPECT_EQ(failure(stated.url()), ErrorKind::Failed);
    FaultyServer unstated({{answer("200 OK", "", "0123456789")}});
    EXPECT_EQ(failure(unstated.url()), ErrorKind::Failed);
    EXPECT_THAT(message, HasSubstr("larger than 8 bytes"));

    options.attempts = 1;
    options.stallSeconds = 1;
    FaultyServer stalled({{answer("200 OK", "Content-Length: 8\r\n", "0123"), true}});
    EXPECT_EQ(failure(stalled.url()), ErrorKind::Transient);

    options.stallSeconds = 300;
    const double start = monotonicSeconds();
    options.isCancelled = [&] { return monotonicSeconds() > start + 0.2; };
    FaultyServer cancelled({{answer("200 OK", "Content-Length: 8\r\n", "0123"), true}});
    EXPECT_EQ(failure(cancelled.url()), ErrorKind::Cancelled);
    EXPECT_LT(monotonicSeconds() - start, 60) << "it hangs";
}

TEST_F(HttpDownloadTest, ATricklingServerIsGivenUp) {
    options.attempts = 1;
    const std::string trickle = ok(std::string(2000, 'x'));
    const double start = monotonicSeconds();
    options.stallSeconds = 1;
    FaultyServer slow({{trickle, false, 200}});
    EXPECT_EQ(failure(slow.url()), ErrorKind::Transient);
    EXPECT_THAT(message, HasSubstr("too slow"));

    // What was measured is a second old at times: quick enough has to be told from that.
    options.minBytesPerSecond = 20;
    options.stallSeconds = 2;
    FaultyServer quickEnough({{ok(std::string(600, 'x')), false, 200}});
    EXPECT_EQ(failure(quickEnough.url()), std::nullopt);

    options.minBytesPerSecond = 1;
    options.maxSeconds = 0.5;
    FaultyServer late({{trickle, false, 200}});
    EXPECT_EQ(failure(late.url()), ErrorKind::Transient);
    EXPECT_THAT(message, HasSubstr("within 0.5 seconds"));
    EXPECT_LT(monotonicSeconds() - start, 60) << "it hangs";
}

TEST_F(HttpDownloadTest, MessagesKeepPasswordsToThemselves) {
    options.attempts = 1;
    FaultyServer missing({{answer("404 Not Found", "", "")}});
    std::string url = missing.url();
    url.insert(7, "anna:secret@");
    EXPECT_EQ(failure(url), ErrorKind::Failed);
    EXPECT_THAT(message, Not(HasSubstr("secret")));
}

}  // namespace
}  // namespace platform
