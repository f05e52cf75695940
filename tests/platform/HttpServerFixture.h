// A server on a port of its own, and what its tests ask of it.
#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <mutex>
#include <thread>

#include "HttpClient.h"
#include "platform/base/Paths.h"
#include "platform/http/Server.h"
#include "tests/platform/TemporaryFolder.h"

namespace platform::http {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::HttpClient;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

/// Whether it comes true before everybody has lost patience.
template <typename Condition>
bool comesTrue(const Condition& condition, std::chrono::seconds patience = 60s) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

/// By the first part of the path.
class Site : public Handler {
  public:
    Expectation expect(const RequestHead& head) override {
        const std::string& place = head.path.empty() ? "" : head.path[0];
        if (place == "echo") return BodyInMemory{1000};
        if (place == "upload") return BodyInFile{folder / "upload", 1 << 20};
        if (place == "refused") return Answer::text(401, "who are you?");
        return NoBody{};
    }

    void handle(Request request, Responder responder) override {
        const RequestHead& head = request.head;
        const std::string place = head.path.empty() ? "" : head.path[0];
        if (place == "ping") return responder.answer(Answer::text(200, "pong"));
        if (place == "echo") return responder.answer(Answer::text(200, request.body));
        if (place == "names") return responder.answer(Answer::text(200, namesOf(head)));
        if (place == "file") return responder.answer(fileAnswer());
        if (place == "throw") throw std::runtime_error("something");
        if (place == "drop") return;
        const std::lock_guard lock(mutex);
        if (place == "upload") {
            request.file->publish();
            responder.answer(Answer::text(201, std::to_string(request.bodyBytes)));
        } else if (place == "events") {
            streams.push_back(responder.stream());
            streams.back().onClosed([this] { ++closedStreams; });
            lastIds.push_back(head.header("last-event-ID"));
        } else if (place == "slow") {
            responder.onGone([this] { ++gone; });
            waiting.push_back(std::move(responder));
        } else {
            others.push_back(head.target);
            responder.answer(Answer::text(404, ""));
        }
    }

    static std::string namesOf(const RequestHead& head) {
        std::string text;
        for (const std::string& name : head.path) text += "/" + name;
        for (const Field& each : head.query) text += "|" + each.name + "=" + each.value;
        return text;
    }
    Answer fileAnswer() const {
        return Answer::ofFile(openFile(folder / "file", O_RDONLY), "video/mp4")
            .with("ETag", "\"v1\"")
            .with("Cache-Control", "private");
    }
    size_t countOf(const auto& list) {
        const std::lock_guard lock(mutex);
        return list.size();
    }

    fs::path folder;
    std::mutex mutex;
    std::vector<Responder> waiting;
    std::vector<EventStream> streams;
    std::vector<std::string> lastIds, others;
    std::atomic<int> gone{0}, closedStreams{0};
};

class HttpServerTest : public testing::Test {
  protected:
    void SetUp() override { site.folder = folder; }
    void TearDown() override { server.reset(); }

    void start() { server = std::make_unique<Server>(options, site); }
    std::string host() const { return "Host: localhost:" + std::to_string(server->port()) + "\r\n"; }
    std::string get(const std::string& target, const std::string& lines = "") const {
        return "GET " + target + " HTTP/1.1\r\n" + host() + lines + "\r\n";
    }
    std::string post(const std::string& target, const std::string& lines,
                     const std::string& body = "") const {
        return "POST " + target + " HTTP/1.1\r\n" + host() + lines + "\r\n" + body;
    }
    std::string ask(const std::string& request, bool hasBody = true) const {
        HttpClient client(server->port());
        client.send(request);
        return client.readAnswer(hasBody);
    }
    void expectPong() const { EXPECT_THAT(ask(get("/ping")), StartsWith("HTTP/1.1 200 OK\r\n")); }
    void writeFile(uint64_t bytes) const {
        std::ofstream(folder / "file") << "0123456789";
        if (bytes > 10) fs::resize_file(folder / "file", bytes);
    }
    /// What an upload that was not published leaves.
    bool isFolderEmpty() const { return fs::is_empty(folder); }

    const test::TemporaryFolder temporary;
    const fs::path folder = temporary.path();
    Site site;
    ServerOptions options;
    std::unique_ptr<Server> server;
};

}  // namespace platform::http
