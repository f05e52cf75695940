// A studio that runs, and a client that may say anything to it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "platform/base/Json.h"
#include "platform/base/Paths.h"
#include "studio/Studio.h"
#include "tests/platform/HttpClient.h"

namespace multiscene::studio {

/// An answer, taken apart.
struct Reply {
    int status = 0;
    std::string head, body;

    platform::Value json() const { return platform::parseJson(body, "answer"); }
    std::string code() const { return json().string("code"); }
    std::string field(const std::string& name) const {
        const size_t at = head.find("\r\n" + name + ": ");
        if (at == std::string::npos) return {};
        const size_t start = at + name.size() + 4;
        return head.substr(start, head.find("\r\n", start) - start);
    }
};

/// What a browser or a program says of itself with each request.
struct Who {
    std::string cookie, pageToken, bearer;

    std::string lines() const {
        std::string text;
        if (!cookie.empty()) text += "Cookie: " + cookie + "\r\n";
        if (!pageToken.empty()) text += "X-Studio-Token: " + pageToken + "\r\n";
        if (!bearer.empty()) text += "Authorization: Bearer " + bearer + "\r\n";
        return text;
    }
};

class StudioFixture : public testing::Test {
  protected:
    void SetUp() override {
        settings.home = home;
        settings.port = 0;
        settings.pageFolder = home / "page";
        settings.program = programUnderTest();
    }
    void TearDown() override {
        studio.reset();
        std::filesystem::remove_all(home);
    }

    void start() { studio = std::make_unique<Studio>(settings); }

    /// The program beside this test.
    static std::filesystem::path programUnderTest() {
        return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "multiscene";
    }

    std::string host() const { return "127.0.0.1:" + std::to_string(studio->port()); }
    std::string hostLine() const { return "Host: " + host() + "\r\n"; }

    Reply send(const std::string& bytes, bool hasBody = true) const {
        platform::test::HttpClient client(studio->port());
        client.send(bytes);
        const std::string all = client.readAnswer(hasBody);
        const size_t end = all.find("\r\n\r\n");
        if (end == std::string::npos) return {};
        return {std::atoi(all.c_str() + all.find(' ')), all.substr(0, end + 2), all.substr(end + 4)};
    }
    Reply ask(const std::string& method, const std::string& target, const Who& who,
              const std::string& lines = "") const {
        return send(method + " " + target + " HTTP/1.1\r\n" + hostLine() + who.lines() + lines + "\r\n",
                    method != "HEAD");
    }
    Reply get(const std::string& target, const Who& who = {}) const { return ask("GET", target, who); }
    Reply sendJson(const std::string& method, const std::string& target, const std::string& body,
                   const Who& who = {}, const std::string& lines = "") const {
        return send(method + " " + target + " HTTP/1.1\r\n" + hostLine() + who.lines() + lines +
                    "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
                    "\r\n\r\n" + body);
    }

    /// The page's key, as the file has it now.
    std::string key() const {
        const std::string url = studio->address();
        return url.substr(url.find("#key=") + 5);
    }
    /// A browser that has opened the page.
    Who browser() const { return known(sendJson("POST", "/api/v1/sessions", "{\"key\":\"" + key() + "\"}")); }
    static Who known(const Reply& reply) {
        EXPECT_EQ(reply.status, 201) << reply.body;
        const std::string cookie = reply.field("Set-Cookie");
        return {cookie.substr(0, cookie.find(';')), reply.json().string("token"), ""};
    }

    std::filesystem::path home =
        std::filesystem::temp_directory_path() / ("studio-test-" + platform::uniqueIdentifier());
    StudioSettings settings;
    std::unique_ptr<Studio> studio;
};

}  // namespace multiscene::studio
