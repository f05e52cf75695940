// A studio that makes videos with the real program, asked over HTTP.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "studio/store/Names.h"
#include "tests/program/Program.h"
#include "tests/program/SmallTemplate.h"
#include "tests/studio/StudioFixture.h"

namespace multiscene::studio {

class JobsFixture : public StudioFixture {
  protected:
    static constexpr int kTemplate = 1000;  // the sample "minimal": a text, a photo, 90 frames
    static constexpr const char* kSmall = R"("size":{"width":72,"height":128})";
    static constexpr const char* kLong = R"("size":{"width":1440,"height":2560})";

    void SetUp() override {
        StudioFixture::SetUp();
        std::filesystem::create_directories(home);
        settings.workers = 1;
        settings.photosStay = std::chrono::seconds(0);
    }

    /// The program as it was, but that one of its words is done by a script.
    void replaceProgram(const std::string& word, const std::string& script) {
        const auto file = home / (word + ".sh");
        std::ofstream(file) << "#!/bin/sh\ncase \" $* \" in *\" " << word << " \"*) " << script
                            << " ;; esac\nexec " << settings.program.string() << " \"$@\"\n";
        ::chmod(file.c_str(), 0755);
        settings.program = file;
    }

    void begin() {
        start();
        me = browser();
    }

    platform::Value submit(const std::string& members, const std::string& lines = "") {
        const Reply reply =
            sendJson("POST", "/api/v1/jobs",
                     "{\"template\":" + std::to_string(kTemplate) + "," + members + "}", me, lines);
        EXPECT_EQ(reply.status, 202) << reply.body;
        EXPECT_EQ(reply.field("Location"), "/api/v1/jobs/" + reply.json().string("id"));
        return reply.json();
    }

    platform::Value job(const std::string& id) const { return get("/api/v1/jobs/" + id, me).json(); }

    /// The job once it is in that state, or has ended.
    platform::Value waitFor(const std::string& id, const std::string& state = "") const {
        for (int tries = 0; tries < 3000; ++tries) {
            const platform::Value now = job(id);
            if (now.string("state") == state || !now["ended"].isNone()) return now;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        ADD_FAILURE() << "the job does not get on: " << platform::jsonText(job(id));
        return {};
    }

    Reply uploadBytes(const std::string& bytes, const std::string& name = "photo.png") const {
        return send("POST /api/v1/uploads?name=" + name + " HTTP/1.1\r\n" + hostLine() + me.lines() +
                    "Content-Length: " + std::to_string(bytes.size()) + "\r\n\r\n" + bytes);
    }
    std::string uploadPicture() {
        const auto file = home / "picture.png";
        test::writePicture(file, 0x3060c0, 60, 40);
        const Reply reply = uploadBytes(test::contentOf(file));
        EXPECT_EQ(reply.status, 201) << reply.body;
        return reply.json().string("id");
    }

    static std::vector<std::string> namesIn(const std::filesystem::path& folder) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        return names;
    }
    std::filesystem::path studioFolder() const { return home / "studio"; }

    Who me;
};

}  // namespace multiscene::studio
