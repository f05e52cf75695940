#include <pthread.h>

#include "studio/access/SessionStore.h"
#include "studio/jobs/JobOrder.h"
#include "studio/videos/VideoLinks.h"
#include "tests/studio/JobsFixture.h"

namespace multiscene::studio {
namespace {

using platform::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using JobsTest = JobsFixture;

std::vector<std::string> idsOf(const std::vector<WaitingJob>& jobs) {
    std::vector<std::string> ids;
    for (const WaitingJob& job : jobs) ids.push_back(job.id);
    return ids;
}

TEST(JobOrderTest, SessionsTakeTurnsAndDraftsGoFirst) {
    const std::vector<WaitingJob> jobs{{"a1", "a", false, 1}, {"a2", "a", false, 2}, {"a3", "a", false, 3},
                                       {"b1", "b", false, 4}, {"b2", "b", false, 5}, {"c1", "c", false, 6}};
    EXPECT_THAT(idsOf(inOrder(jobs, {})), ElementsAre("a1", "b1", "c1", "a2", "b2", "a3"));
    EXPECT_THAT(idsOf(inOrder(jobs, {{"a", 9}, {"b", 8}})), ElementsAre("c1", "b1", "a1", "b2", "a2", "a3"));
    std::vector<WaitingJob> mixed = jobs;
    mixed[2].isUrgent = mixed[4].isUrgent = true;
    EXPECT_THAT(idsOf(inOrder(mixed, {})), ElementsAre("a3", "b2", "c1", "a1", "b1", "a2"));
}

TEST_F(JobsTest, FromAPhotoToAPlayedFile) {
    settings.photosStay = std::chrono::seconds(60);
    begin();
    const std::string photo = uploadPicture();
    EXPECT_EQ(get("/api/v1/uploads/" + photo + "/proxy.jpg", me).body.substr(0, 2), "\xff\xd8");
    const std::string values = R"("values":{"text":"Hello","photo":{"upload":")" + photo + "\"}},";
    const Value asked = submit(values + kSmall + R"(,"title":"A b/\u00e9","metadata":{"n":7})");
    EXPECT_EQ(asked.string("state"), "queued");
    EXPECT_EQ(asked.integer("total"), 90);
    const Value done = waitFor(asked.string("id"));
    ASSERT_EQ(done.string("state"), "done") << platform::jsonText(done);
    EXPECT_EQ(done.integer("frame"), 90);
    EXPECT_EQ(done["metadata"].integer("n"), 7);

    // The same as the program makes of the same things.
    const std::string address = "/api/v1/videos/" + done.string("video");
    const std::string file = get(address + "/file", me).body;
    const auto original = studioFolder() / "uploads" / photo / "own" / "photo.jpg";
    std::ofstream(home / "media.json") << R"({"text":"Hello","photo":")" << original.string() << "\"}";
    const auto made = test::run({programUnderTest(), "--home", home, "make", std::to_string(kTemplate),
                                 "--media", home / "media.json", "--size", "72x128", "-o", home / "out.mp4"});
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_TRUE(file == test::contentOf(home / "out.mp4"));

    const Value video = get(address, me).json();
    EXPECT_EQ(video.integer("bytes"), static_cast<int64_t>(file.size()));
    EXPECT_EQ(video.integer("width"), 72);
    EXPECT_EQ(video.integer("frames"), 90);
    EXPECT_EQ(ask("GET", address + "/file", me, "Range: bytes=4-7\r\n").body, "ftyp");
    EXPECT_THAT(get(address + "/file?download=1", me).head,
                HasSubstr("attachment; filename=\"A-b.mp4\"; filename*=UTF-8''A-b%C3%A9.mp4\r\n"));
    EXPECT_EQ(get(address + "/poster.jpg", me).body.substr(0, 2), "\xff\xd8");
    EXPECT_THAT(get(address + "/qr.svg", me).body, HasSubstr("<svg"));
    EXPECT_EQ(get("/api/v1/videos", me).json().array("videos").size(), 1u);

    // A link needs no session, and is good for nothing else.
    const Value link = sendJson("POST", address + "/links", "{\"hours\":1}", me).json();
    std::string path = link.string("url");
    path = path.substr(path.find("/s/"));
    EXPECT_TRUE(get(path).body == file);
    path.back() = path.back() == 'A' ? 'B' : 'A';
    EXPECT_EQ(get(path).status, 404);
    EXPECT_EQ(get(address + "/file").status, 401);

    // Nobody else sees any of it.
    const Who other{"", "", SessionStore(studioFolder() / "studio.db").addToken("other", Access::Make)};
    for (const std::string& each :
         {address, address + "/file", "/api/v1/jobs/" + done.string("id"), "/api/v1/uploads/" + photo,
          "/api/v1/jobs/" + done.string("id") + "/request"})
        EXPECT_EQ(get(each, other).status, 404) << each;
    EXPECT_EQ(sendJson("POST", "/api/v1/jobs", "{\"template\":1000," + values + kSmall + "}", other).status,
              422);

    const std::string longTitle = std::string(119, 'a') + "\u00e9";
    sendJson("PATCH", address, "{\"title\":\"" + longTitle + "\"}", me);
    EXPECT_THAT(get(address + "/file", me).head, HasSubstr("UTF-8''" + std::string(119, 'a') + ".mp4\r\n"))
        << "no half letter";
    EXPECT_EQ(sendJson("PATCH", address, R"({"title":"New","kept":true})", me).json().string("title"), "New");
    EXPECT_EQ(ask("DELETE", address + "?photos=true", me).status, 204);
    EXPECT_EQ(get(address, me).status, 404);
    EXPECT_EQ(job(done.string("id")).string("state"), "expired");
    EXPECT_THAT(namesIn(studioFolder() / "videos"), IsEmpty());
    EXPECT_THAT(namesIn(studioFolder() / "uploads"), IsEmpty());
    EXPECT_THAT(namesIn(studioFolder() / "jobs"), IsEmpty());
    const Value again = get("/api/v1/jobs/" + done.string("id") + "/request", me).json();
    EXPECT_TRUE(again["values"]["photo"].isNone());
    EXPECT_EQ(again["values"].string("text"), "Hello");
}

TEST_F(JobsTest, WhatIsAskedForWronglyIsSaidWithItsPlace) {
    begin();
    const auto refused = [&](const std::string& body) { return sendJson("POST", "/api/v1/jobs", body, me); };
    const auto pointers = [](const Reply& reply) {
        std::vector<std::string> all;
        const Value body = reply.json();
        for (const Value& each : body.array("errors")) all.push_back(each.string("pointer"));
        return all;
    };
    EXPECT_EQ(refused(R"({"template":1000,"colour":1})").status, 400);
    const Reply faults = refused(
        R"({"template":1000,"values":{"text":")" + std::string(49, 'x') +
        R"(","photo":{"upload":"upl_a"},"nothing":"x"},"music":{"kind":"own","upload":"upl_b"},"size":{"width":71,"height":128}})");
    EXPECT_EQ(faults.status, 422);
    EXPECT_THAT(pointers(faults), ElementsAre("/values/nothing", "/values/photo/upload", "/values/text",
                                              "/music/upload", "/size"));
    EXPECT_EQ(refused(R"({"template":999})").code(), "no-such-template");
    EXPECT_THAT(pointers(refused(R"({"template":1000,"size":{"width":8192,"height":8192}})")),
                ElementsAre("/size"));
    const Value check =
        sendJson("POST", "/api/v1/checks",
                 R"({"template":1000,"values":{"text":"123456789012345678901234567890"}})", me)
            .json();
    EXPECT_EQ(check["fits"].string("text"), "smaller");
    ASSERT_EQ(check.array("missing").size(), 1u);
    EXPECT_EQ(check.array("missing")[0].string("key"), "photo");
    EXPECT_GT(check["seconds"].doubleValue(), 0.5);
    EXPECT_EQ(check.integer("place"), 0);
}

TEST_F(JobsTest, OneThatIsCancelledIsGoneAtOnce) {
    settings.limits.jobsOfSession = 2;
    begin();
    const std::string running = submit(kLong).string("id");
    waitFor(running, "running");
    const std::string waiting = submit(kSmall).string("id"), last = submit(kSmall).string("id");
    EXPECT_EQ(job(last).integer("place"), 2);
    EXPECT_EQ(sendJson("POST", "/api/v1/jobs", "{\"template\":1000}", me).code(), "queue-full");
    EXPECT_EQ(ask("POST", "/api/v1/jobs/" + waiting + "/cancel", me).status, 202);
    EXPECT_EQ(job(waiting).string("state"), "cancelled");
    EXPECT_EQ(job(last).integer("place"), 1);

    // The picture of the frame that is being drawn comes within a second of its beginning.
    Reply picture = get("/api/v1/jobs/" + running + "/picture.jpg", me);
    for (int tries = 0; tries < 500 && picture.status != 200; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        picture = get("/api/v1/jobs/" + running + "/picture.jpg", me);
    }
    EXPECT_EQ(picture.body.substr(0, 2), "\xff\xd8");

    EXPECT_EQ(ask("POST", "/api/v1/jobs/" + running + "/cancel", me).status, 202);
    EXPECT_EQ(waitFor(running).string("state"), "cancelled");
    EXPECT_EQ(ask("POST", "/api/v1/jobs/" + running + "/cancel", me).code(), "has-ended");
    EXPECT_EQ(waitFor(last).string("state"), "done");
    EXPECT_EQ(get("/api/v1/videos", me).json().array("videos").size(), 1u);
    EXPECT_THAT(namesIn(studioFolder() / "jobs"), IsEmpty());
}

TEST_F(JobsTest, TheSameKeyIsTheSameJob) {
    begin();
    const std::string key = "Idempotency-Key: one\r\n";
    const std::string id = submit(kSmall, key).string("id");
    EXPECT_EQ(submit(kSmall, key).string("id"), id);
    EXPECT_EQ(sendJson("POST", "/api/v1/jobs", "{\"template\":1000}", me, key).code(), "key-used");
    EXPECT_EQ(waitFor(id).string("state"), "done");
    EXPECT_EQ(submit(kSmall, key).string("id"), id);
    const Reply copy = sendJson("POST", "/api/v1/jobs/" + id + "/copies",
                                R"({"values":{"text":"B"},"draft":true,"size":null})", me);
    EXPECT_EQ(copy.json().string("kind"), "draft");
    EXPECT_EQ(get("/api/v1/jobs", me).json().array("jobs").size(), 2u);
    const Value draft = waitFor(copy.json().string("id"));
    EXPECT_EQ(get("/api/v1/videos/" + draft.string("video"), me).json().integer("height"), 640);
    EXPECT_EQ(get("/api/v1/videos", me).json().array("videos").size(),
              1u);  // one looks at a draft, and it goes
    const Value page = get("/api/v1/jobs?limit=1", me).json();
    EXPECT_EQ(page.array("jobs")[0].string("id"), copy.json().string("id"));
    const Value next = get("/api/v1/jobs?limit=1&cursor=" + page.string("next"), me).json();
    EXPECT_EQ(next.array("jobs")[0].string("id"), id);
    EXPECT_TRUE(next["next"].isNone());
}

TEST_F(JobsTest, OneSessionDoesNotKeepAnotherWaiting) {
    begin();
    std::vector<std::string> ids;
    for (int count = 0; count < 4; ++count) ids.push_back(submit(kSmall).string("id"));
    const Who first = me;
    me = {"", "", SessionStore(studioFolder() / "studio.db").addToken("other", Access::Make)};
    const std::string other = submit(kSmall).string("id");
    const std::string began = waitFor(other).string("started");
    me = first;
    EXPECT_GT(waitFor(ids[2]).string("started"), began);
    EXPECT_GT(waitFor(ids[3]).string("started"), began);
}

TEST_F(JobsTest, OneThatIsInterruptedIsTriedAgainSoOftenAndNoMore) {
    settings.limits.jobAttempts = 2;
    replaceProgram("make", "echo x >> " + (home / "runs").string() + "; kill -KILL $$");
    begin();
    const Value failed = waitFor(submit(kSmall).string("id"));
    EXPECT_EQ(failed.string("state"), "failed");
    EXPECT_EQ(failed["problem"].string("code"), "interrupted");
    EXPECT_EQ(failed.integer("attempt"), 2);
    EXPECT_EQ(test::contentOf(home / "runs"), "x\nx\n");
    const Value japanese = get("/api/v1/jobs/" + failed.string("id") + "?lang=ja", me).json();
    EXPECT_THAT(japanese["problem"].string("title") + japanese["problem"].string("detail"),
                HasSubstr("中断"));
}

/// While it lives no thread can be started: none has room for its stack.
class NoThreads {
  public:
    NoThreads() {
        pthread_getattr_default_np(&usual_);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        pthread_attr_setstacksize(&huge, size_t{1} << 47);
        EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
    }
    ~NoThreads() { pthread_setattr_default_np(&usual_); }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

  private:
    pthread_attr_t usual_;
};

TEST_F(JobsTest, OneForWhichNothingCanBeStartedIsTriedAgain) {
    begin();
    std::string id;
    {
        const NoThreads none;
        id = submit(kSmall).string("id");
        EXPECT_EQ(uploadBytes("x").status, 503) << "nobody can say that it is no photo";
        for (int tries = 0; tries < 200 && job(id).integer("attempt") == 0; ++tries)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_EQ(get("/api/v1/templates/1000", me).status, 200);
    }
    const Value done = waitFor(id);
    EXPECT_EQ(done.string("state"), "done") << platform::jsonText(done);
    EXPECT_GE(done.integer("attempt"), 2);
    EXPECT_FALSE(uploadPicture().empty());
    EXPECT_THAT(namesIn(studioFolder() / "jobs"), IsEmpty());
}

TEST_F(JobsTest, WhatTheProgramSaysIsTheProblem) {
    replaceProgram(
        "make",
        R"(echo '{"event":"error","code":4,"message":"is no photo","file":"/secret","key":"photo"}'; exit 4)");
    begin();
    const Value failed = waitFor(submit(kSmall).string("id"));
    EXPECT_EQ(failed["problem"].string("code"), "input-fault");
    EXPECT_EQ(failed["problem"].array("errors")[0].string("pointer"), "/values/photo");
    EXPECT_EQ(failed.integer("attempt"), 1);
    EXPECT_THAT(platform::jsonText(failed), testing::Not(HasSubstr("secret")));
}

TEST_F(JobsTest, InstallingIsAJob) {
    replaceProgram("install", R"(echo '{"event":"download","bytes":30,"totalBytes":100}'; sleep 1; exit 0)");
    begin();
    const Reply asked = ask("POST", "/api/v1/templates/4711/installation", me);
    ASSERT_EQ(asked.status, 202) << asked.body;
    const std::string id = asked.json().string("id");
    EXPECT_EQ(asked.json().string("kind"), "install");
    Value now = waitFor(id, "running");
    for (int tries = 0; tries < 100 && now["ended"].isNone() && now.integer("frame") != 30; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        now = job(id);
    }
    EXPECT_EQ(now.integer("frame"), 30);
    EXPECT_EQ(now.integer("total"), 100);
    EXPECT_EQ(waitFor(id).string("state"), "done");
    EXPECT_EQ(ask("POST", "/api/v1/templates/x/installation", me).status, 404);
}

TEST_F(JobsTest, AStudioThatEndsGoesOnAtItsNextStart) {
    begin();
    const std::string id = submit(kLong).string("id"), waiting = submit(kSmall).string("id");
    waitFor(id, "running");
    studio.reset();
    // What nobody knows is swept away.
    for (const char* name : {"uploads/upl_x", "jobs/job_x.1"})
        std::filesystem::create_directories(studioFolder() / name);
    std::ofstream(studioFolder() / "videos" / "vid_x.mp4") << "x";
    begin();
    EXPECT_THAT(namesIn(studioFolder() / "uploads"), IsEmpty());
    EXPECT_THAT(namesIn(studioFolder() / "videos"), IsEmpty());
    const Value again = waitFor(id, "running");
    EXPECT_EQ(again.integer("attempt"), 1);  // nothing went wrong with it
    EXPECT_EQ(ask("POST", "/api/v1/jobs/" + id + "/cancel", me).status, 202);
    EXPECT_EQ(waitFor(waiting).string("state"), "done");
    studio.reset();
    std::filesystem::remove_all(studioFolder() / "videos");
    begin();
    EXPECT_EQ(job(waiting).string("state"), "expired");
}

TEST_F(JobsTest, UploadsThatAreNotOrTooManyLeaveNothing) {
    replaceProgram("intake", R"(for last; do file=$folder; folder=$last; done
        if grep -q film "$file"; then echo '{"event":"intake","kind":"video","seconds":2.5,"width":2,"height":2}'; exit 0; fi
        if grep -q bomb "$file"; then kill -SEGV $$; fi
        echo '{"event":"error","code":4,"message":"no"}'; exit 4)");
    settings.limits.storedBytes = 1000;
    begin();
    EXPECT_EQ(uploadBytes("text").code(), "not-media");
    EXPECT_EQ(uploadBytes("bomb").code(), "not-media");
    EXPECT_EQ(uploadBytes(std::string(1001, 'x')).code(), "quota");
    EXPECT_THAT(namesIn(studioFolder() / "uploads"), IsEmpty());
    const Value film = uploadBytes("film" + std::string(900, 'x'), "a%3Cb%3E.mp4").json();
    EXPECT_EQ(film.string("name"), "a<b>.mp4");
    EXPECT_EQ(film["seconds"].doubleValue(), 2.5);
    EXPECT_EQ(uploadBytes("film" + std::string(200, 'x')).code(), "quota");
    // Used by no photo's place, and gone when its owner says so.
    const std::string values =
        R"({"template":1000,"values":{"photo":{"upload":")" + film.string("id") + "\"}}}";
    EXPECT_EQ(sendJson("POST", "/api/v1/jobs", values, me).status, 422);
    EXPECT_EQ(ask("DELETE", "/api/v1/uploads/" + film.string("id"), me).status, 204);
    EXPECT_THAT(namesIn(studioFolder() / "uploads"), IsEmpty());
}

TEST_F(JobsTest, ALinkTakesOneFileOfWhoeverHasIt) {
    settings.limits.uploads = 1;
    begin();
    const auto file = home / "picture.png";
    test::writePicture(file, 0x3060c0, 60, 40);
    const std::string picture = test::contentOf(file);
    const auto link = [&](const std::string& wishes) {
        return sendJson("POST", "/api/v1/uploads/links", wishes, me).json();
    };
    const auto put = [&](const std::string& address, const std::string& bytes) {
        return send("PUT " + address.substr(address.find("/u/")) + " HTTP/1.1\r\n" + hostLine() +
                    "Content-Length: " + std::to_string(bytes.size()) + "\r\n\r\n" + bytes);
    };
    const Value first = link("{}"), given = link("{}");
    const std::string address = given.string("url");
    EXPECT_THAT(address, testing::StartsWith("http://" + host() + "/u/"));
    std::string changed = address;
    changed[changed.rfind('.') - 1] ^= 1;  // more bytes than were allowed
    EXPECT_EQ(put(changed, picture).code(), "link-gone");
    EXPECT_EQ(put(first.string("url"), picture).status, 201);
    EXPECT_EQ(put(address, picture).code(), "quota");  // which leaves the link as it was
    EXPECT_EQ(ask("DELETE", "/api/v1/uploads/" + first.string("id"), me).status, 204);
    const Reply taken = put(address, picture);
    EXPECT_EQ(taken.status, 201) << taken.body;
    EXPECT_EQ(taken.json().string("id"), given.string("id"));
    EXPECT_EQ(get("/api/v1/uploads/" + given.string("id"), me).json().string("kind"), "photo");
    EXPECT_EQ(put(address, picture).code(), "link-used");
    SessionStore store(studioFolder() / "studio.db");
    const Who other{"", "", store.addToken("other", Access::Make)};
    const Value theirs = sendJson("POST", "/api/v1/uploads/links", "{}", other).json();
    store.revoke(store.known().back().session.id);
    EXPECT_EQ(put(theirs.string("url"), picture).code(), "link-gone");
    const Value small = link("{\"bytes\":10}");
    EXPECT_EQ(put(small.string("url"), picture).status, 413);

    // The middle of what is shown lies in the photo.
    const auto cropped = [&](const std::string& x) {
        return sendJson("POST", "/api/v1/jobs",
                        R"({"template":1000,"draft":true,"values":{"photo":{"upload":")" +
                            given.string("id") + R"(","crop":{"x":)" + x +
                            R"(,"y":0,"width":1,"height":1}}}})",
                        me);
    };
    EXPECT_EQ(cropped("-0.6").json().array("errors")[0].string("pointer"), "/values/photo/crop");
    const Reply job = cropped("0");
    EXPECT_EQ(job.status, 202) << job.body;
    const Value done = waitFor(job.json().string("id"));
    EXPECT_EQ(done.string("state"), "done") << platform::jsonText(done);
    const auto linkTo = [&](const char* key) {
        return sendJson("POST", "/api/v1/videos/" + done.string("video") + "/links", "{\"hours\":1}", me,
                        std::string("Idempotency-Key: ") + key + "\r\n")
            .json()
            .string("url");
    };
    const std::string once = linkTo("a");
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // links hold seconds
    EXPECT_EQ(linkTo("a"), once);
    EXPECT_NE(linkTo("b"), once);
}

TEST_F(JobsTest, APageThatWasAwayHearsWhatItHasMissed) {
    begin();
    const auto listen = [&](const std::string& last) {
        auto client = std::make_unique<platform::test::HttpClient>(studio->port());
        client->send("GET /api/v1/events HTTP/1.1\r\n" + hostLine() + me.lines() +
                     (last.empty() ? "" : "Last-Event-ID: " + last + "\r\n") + "\r\n");
        client->readUntil("\r\n\r\n");
        return client;
    };
    const auto first = listen("");
    const std::string id = submit(kSmall).string("id");
    const auto stateAfter = [](platform::test::HttpClient& client, const std::string& state) {
        std::string last, block;
        while (block.find("\"state\":\"" + state + "\"") == std::string::npos) {
            block = client.readUntil("\n\n");
            if (block.empty()) break;
            const size_t at = block.find("id: ");
            if (at != std::string::npos) last = block.substr(at + 4, block.find('\n', at) - at - 4);
        }
        return last;
    };
    const std::string running = stateAfter(*first, "running");
    ASSERT_FALSE(running.empty());
    EXPECT_FALSE(stateAfter(*first, "done").empty());
    // Again from there on: everything up to the end; from an unknown place: the job as it is.
    EXPECT_FALSE(stateAfter(*listen(running), "done").empty());
    EXPECT_FALSE(stateAfter(*listen("other-1"), "done").empty());
    EXPECT_EQ(job(id).string("state"), "done");
}

TEST(VideoLinksTest, AreGoodUntilTheirTimeAndWithTheirKey) {
    const test::TemporaryFolder folder;
    const VideoLinks links(folder.file("key")), same(folder.file("key")), other(folder.file("other"));
    const std::string video = newName("vid"), token = links.token(video, 5'000'000);
    EXPECT_EQ(same.videoOf(token, 4'999'999), video);
    EXPECT_FALSE(same.videoOf(token, 5'000'000));
    EXPECT_FALSE(other.videoOf(token, 0));
    std::string later = token;
    later.replace(later.find(".5000."), 6, ".9000.");
    for (const std::string& wrong : {later, token + "A", video, std::string(".."), std::string()})
        EXPECT_FALSE(links.videoOf(wrong, 0)) << wrong;
    struct stat info {};
    ASSERT_EQ(::stat(folder.file("key").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

}  // namespace
}  // namespace multiscene::studio
