
#include <algorithm>
#include <fstream>
#include <memory>

#include "platform/base/PropertyList.h"
#include "tests/app/StaticServer.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

struct Language {
    const char* locale;
    const char* title;
    const char* installing;
};

constexpr Language kLanguages[] = {{"en_US.UTF-8", "Small party", "Installing the template"},
                                   {"zh_CN.UTF-8", "小派对", "正在安装"},
                                   {"ja_JP.UTF-8", "小さなパーティー", "インストール"}};

SmallTemplate namedTemplate(const std::string& name, int sId) {
    SmallTemplate small;
    small.name = name;
    small.record = recordOf(sId, name, "scene.plist", SmallTemplate::frames);
    small.record["eName"] = kLanguages[0].title;
    small.record["cName"] = kLanguages[1].title;
    small.record["jName"] = kLanguages[2].title;
    return small;
}

class TemplatesTest : public ProgramTest {
  protected:
    /// The program in a language, without a proxy.
    Result in(const std::string& locale, const std::vector<std::string>& words) const {
        std::vector<std::string> all{"env", "-u", "MULTISCENE_SERVER", "LC_ALL=" + locale, "no_proxy=*"};
        const std::vector<std::string> rest = command(words);
        all.insert(all.end(), rest.begin(), rest.end());
        return run(all);
    }

    std::string author(const SmallTemplate& small) const { return small.write(folder.path() / "author"); }

    /// An author's template with sample inputs.
    std::string authorWithSample(const SmallTemplate& small) const {
        const fs::path made = author(small);
        fs::create_directories(made / "sample");
        writePicture(made / "sample/me.png", 0x00ff00);
        std::ofstream(made / "sample/inputs.json") << R"({"title": "Hi", "photo": "me.png"})";
        return made;
    }

    Result publish(const std::string& made) const {
        return multiscene({"template", "publish", made, "--to", folder.file("www")});
    }

    /// "templates/small.zip" in the folder of its version, as the list names it.
    std::string placeOf(const fs::path& file) const {
        for (const auto& version : fs::directory_iterator(folder.path() / "www" / file.parent_path()))
            if (fs::exists(version.path() / file.filename()))
                return (file.parent_path() / version.path().filename() / file.filename()).string();
        return file.string();
    }

    std::string pack(const std::string& made, const std::string& name) const {
        const Result result = multiscene({"template", "pack", made, "-o", folder.file(name)});
        EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
        return folder.file(name);
    }

    /// What a template's event in a list says.
    Value listed(const std::string& locale, const std::string& name) const {
        for (const Value& line : in(locale, {"templates", "list", "--json"}).jsonLines())
            if (line.string("name") == name) return line;
        return {};
    }

    fs::path scenes() const { return folder.path() / "home/qvMultiSceneRender/scene"; }

    /// Everything in the folder of scenes, hidden files too.
    std::vector<std::string> installedFolders() const {
        std::vector<std::string> names;
        if (!fs::exists(scenes())) return names;
        for (const auto& entry : fs::directory_iterator(scenes())) names.push_back(entry.path().filename());
        return names;
    }
};

}  // namespace

TEST_F(TemplatesTest, GoFromAuthorToVideoThroughAServerInThreeLanguages) {
    const std::string made = authorWithSample(namedTemplate("small", 7));
    ASSERT_EQ(publish(made).exitCode, 0);
    ASSERT_EQ(publish(author(namedTemplate("second one", 8))).exitCode, 0);
    for (const char* file : {"templates/small.zip", "thumbnails/small.png", "previews/small.mp4"})
        EXPECT_GT(fs::file_size(folder.path() / "www" / placeOf(file)), 100u) << file;
    const StaticServer server(folder.path() / "www", folder.path() / "nginx");
    const Result fetched =
        in(kLanguages[0].locale, {"templates", "update", "--server", server.address(), "--json"});
    ASSERT_EQ(fetched.exitCode, 0) << fetched.errors;
    EXPECT_EQ(fetched.jsonLines().back().integer("offered"), 2);
    writePicture(folder.path() / "me.png", 0x0000ff);

    for (const Language& language : kLanguages) {
        SCOPED_TRACE(language.locale);
        ASSERT_EQ(in(language.locale, {"templates", "update"}).exitCode, 0) << "the address was forgotten";
        const Value offered = listed(language.locale, "small");
        EXPECT_EQ(offered.string("title"), language.title);
        EXPECT_TRUE(offered.boolean("new") && offered.boolean("offered") && !offered.boolean("installed"));
        EXPECT_FALSE(offered.boolean("needsNewerVersion"));
        EXPECT_EQ(offered.integer("photos"), 1);
        EXPECT_DOUBLE_EQ(offered["seconds"].doubleValue(), 0.6);
        EXPECT_GT(offered["megabytes"].doubleValue(), 0);
        const Result list = in(language.locale, {"templates", "list"});
        EXPECT_THAT(list.output, AllOf(HasSubstr(language.title), HasSubstr("offered, new")));
        const Result shown = in(language.locale, {"templates", "show", language.title});
        EXPECT_THAT(shown.output, AllOf(HasSubstr("--photo photo=FILE, cropped to 1:1"),
                                        HasSubstr("--text title=TEXT, room for 5 characters in 1 line"),
                                        HasSubstr(server.address() + placeOf("previews/small.mp4"))));

        const Result installed = in(language.locale, {"templates", "install", "7"});
        ASSERT_EQ(installed.exitCode, 0) << installed.errors;
        EXPECT_THAT(installed.output, AllOf(HasSubstr(language.installing), HasSubstr("installed small (7)"),
                                            HasSubstr("B/s")));
        EXPECT_TRUE(listed(language.locale, "small").boolean("installed"));
        EXPECT_EQ(listed("en_GB.UTF-8", "small").string("title"), kLanguages[0].title);

        const std::string video = folder.file("out.mp4");
        for (const std::string name : {"7", "small", language.title}) {
            const Result result = in(language.locale, {"make", name, "--text", "title=Hi", "--photo",
                                                       "photo=" + folder.file("me.png"), "-o", video});
            ASSERT_EQ(result.exitCode, 0) << result.errors;
            EXPECT_GT(fs::file_size(video), 500u);
            fs::remove(video);
        }
        EXPECT_EQ(in(language.locale, {"templates", "remove", language.title}).exitCode, 0);
        EXPECT_THAT(installedFolders(), IsEmpty());
        EXPECT_FALSE(listed(language.locale, "small").boolean("installed"));
        EXPECT_EQ(in(language.locale, {"make", "7", "-o", video}).exitCode, 3);
    }

    std::string address = server.address() + placeOf("templates/second one.zip");
    address.replace(address.find(' '), 1, "%20");
    const Result spaced = in("C", {"templates", "install", address});
    EXPECT_EQ(spaced.exitCode, 0) << spaced.errors;
    EXPECT_THAT(installedFolders(), ::testing::ElementsAre("second one"));
    const Result missing = in("C", {"templates", "install", server.address() + "templates/none.zip"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.errors, AllOf(HasSubstr("404"), HasSubstr("nothing was installed")));
}

TEST_F(TemplatesTest, AreShownAsTheyLieInAFolderOrAZip) {
    const std::string made = author(namedTemplate("small", 7));
    for (const std::string& source : {made, made + "/small.plist", pack(made, "small.zip")}) {
        const Value shown = multiscene({"templates", "show", source, "--json"}).jsonLines().back();
        EXPECT_EQ(shown.integer("id"), 7) << source;
        EXPECT_EQ(shown.array("inputs").size(), 2u) << source;
        EXPECT_FALSE(shown.boolean("installed"));
    }
    EXPECT_EQ(multiscene({"templates", "show", folder.file("author")}).exitCode, 3);
    EXPECT_EQ(multiscene({"templates", "show", "nobody"}).exitCode, 3);
}

TEST_F(TemplatesTest, OfTheProgramAreFoundByNameUnlessOneIsInstalledInTheirPlace) {
    EXPECT_TRUE(listed("C", "minimal").boolean("sample"));
    EXPECT_EQ(multiscene({"templates", "remove", "minimal"}).exitCode, 3);
    const auto sceneOf = [&](const std::string& name) {
        std::vector<std::string> words{"env", "-C", folder.path()};
        for (const std::string& word : command({"trace", name, "--at", "0"})) words.push_back(word);
        const Result result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return result.exitCode ? 0 : result.jsonLines()[0].array("scenes")[0].integer("sceneId");
    };
    for (const std::string name : {"minimal", "1000", "Minimal"}) EXPECT_EQ(sceneOf(name), 1000) << name;
    const std::string zip = pack(author(namedTemplate("minimal", 7)), "minimal.zip");
    ASSERT_EQ(multiscene({"templates", "install", zip}).exitCode, 0);
    EXPECT_EQ(sceneOf("minimal"), 7);
    const Value shown = multiscene({"templates", "show", "minimal", "--json"}).jsonLines().back();
    EXPECT_EQ(shown.integer("id"), 7);
    EXPECT_FALSE(listed("C", "minimal").boolean("sample"));
}

TEST_F(TemplatesTest, SayWhetherAnythingWasInstalled) {
    SmallTemplate small = namedTemplate("small", 7);
    const std::string zip = pack(author(small), "small.zip");
    const auto install = [&](const std::vector<std::string>& more) {
        std::vector<std::string> words{"templates", "install", "--json"};
        words.insert(words.end(), more.begin(), more.end());
        return multiscene(words);
    };
    EXPECT_EQ(install({zip}).jsonLines().back().string("outcome"), "installed");
    const Value again = install({zip}).jsonLines().back();
    EXPECT_EQ(again.string("outcome"), "alreadyInstalled");
    EXPECT_FALSE(again.boolean("installed"));
    EXPECT_THAT(multiscene({"templates", "install", zip}).output, HasSubstr("nothing was installed"));
    EXPECT_EQ(install({zip, "--replace"}).jsonLines().back().string("outcome"), "replaced");

    const std::string foreign = pack(author(namedTemplate("other", 7)), "other.zip");
    fs::copy_file(zip, folder.file("renamed.zip"));
    std::ofstream(folder.file("broken.zip")) << "no archive";
    for (const auto& [file, reason] : {std::pair{foreign, "belongs to the template \"small\""},
                                       {folder.file("renamed.zip"), "it holds small"},
                                       {folder.file("broken.zip"), "broken.zip"}}) {
        const Result result = install({file});
        EXPECT_EQ(result.exitCode, 3) << result.output;
        EXPECT_EQ(result.errorLines().size(), 1u);
        EXPECT_THAT(result.errors, AllOf(HasSubstr("nothing was installed"), HasSubstr(reason)));
        EXPECT_TRUE(fs::exists(file)) << "the user's own archive was deleted";
    }
    EXPECT_THAT(installedFolders(), ::testing::ElementsAre("small"));
    // What names no template is answered alike everywhere.
    EXPECT_EQ(install({"nothing-like-it"}).exitCode, 3);
    EXPECT_EQ(multiscene({"templates", "remove", "8"}).exitCode, 3);
    EXPECT_EQ(multiscene({"templates", "show", "8"}).exitCode, 3);
    EXPECT_EQ(multiscene({"make", "8", "-o", folder.file("out.mp4")}).exitCode, 3);
}

TEST_F(TemplatesTest, ThatCannotBePlayedAreNeitherPackedNorInstalled) {
    SmallTemplate small = namedTemplate("small", 7);
    const std::string made = author(small);
    const std::string zip = pack(made, "small.zip");
    small.clock.clear();
    author(small);
    const Result packed = multiscene({"template", "pack", made, "-o", zip});
    EXPECT_EQ(packed.exitCode, 3);
    EXPECT_THAT(packed.errors, HasSubstr("nothing was packed"));
    EXPECT_EQ(publish(made).exitCode, 3);
    EXPECT_FALSE(fs::exists(folder.path() / "www/severConfig"));
    ASSERT_EQ(run({"python3", "-m", "zipfile", "-c", zip, made}).exitCode, 0);
    const Result refused = multiscene({"templates", "install", zip});
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_THAT(refused.errors, AllOf(HasSubstr("small/scene.plist: TimeSource"), Not(HasSubstr("staging"))));
    EXPECT_THAT(installedFolders(), IsEmpty());
}

TEST_F(TemplatesTest, NeedingANewerVersionAreListedAsSuchAndNotInstalled) {
    const std::string made = author(namedTemplate("small", 7));
    ASSERT_EQ(multiscene({"template", "publish", made, "--to", folder.file("www"), "--min-version", "99.5",
                          "--not-new"})
                  .exitCode,
              0);
    const StaticServer server(folder.path() / "www", folder.path() / "nginx");
    ASSERT_EQ(in("C", {"templates", "update", "--server", server.address()}).exitCode, 0);
    EXPECT_THAT(in("C", {"templates", "list"}).output, HasSubstr("offered, needs version 99.5"));
    const Result refused = in("C", {"templates", "install", "small"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, HasSubstr("newer version"));
    // The address tells as much as the number, and the archive itself.
    const Result byAddress =
        in("C", {"templates", "install", server.address() + placeOf("templates/small.zip")});
    const Result byArchive =
        in("C", {"templates", "install", folder.file("www/" + placeOf("templates/small.zip"))});
    for (const Result& each : {refused, byAddress, byArchive}) {
        EXPECT_EQ(each.exitCode, 1);
        EXPECT_THAT(each.errors,
                    AllOf(HasSubstr("99.5 is needed, this is 1."), HasSubstr("nothing was installed")));
    }
    EXPECT_THAT(byAddress.output, Not(HasSubstr("B/s"))) << "it was downloaded for nothing";
    EXPECT_EQ(multiscene({"make", folder.file("www/" + placeOf("templates/small.zip")), "-o",
                          folder.file("out.mp4")})
                  .exitCode,
              1);
    EXPECT_THAT(installedFolders(), IsEmpty());
}

TEST_F(TemplatesTest, ThatWerePublishedAgainAreAnnouncedAndUpdatedAtOnce) {
    const auto change = [&](const std::string& made) { writePicture(fs::path(made) / "more.png", 0x00ff00); };
    std::vector<std::string> made;
    for (const auto& [name, number] : {std::pair{"first", 7}, {"second", 8}, {"third", 9}}) {
        made.push_back(author(namedTemplate(name, number)));
        ASSERT_EQ(publish(made.back()).exitCode, 0);
    }
    const StaticServer server(folder.path() / "www", folder.path() / "nginx");
    ASSERT_EQ(in("C", {"templates", "update", "--server", server.address()}).exitCode, 0);
    for (const char* name : {"first", "second"})
        ASSERT_EQ(in("C", {"templates", "install", name}).exitCode, 0);
    change(made[0]);
    change(made[2]);
    ASSERT_EQ(publish(made[0]).exitCode, 0);
    ASSERT_EQ(publish(made[2]).exitCode, 0);
    EXPECT_FALSE(listed("C", "first").boolean("newerOffered"));
    EXPECT_THAT(in("C", {"templates", "update"}).output, HasSubstr("newer versions of 1 installed one"));
    EXPECT_THAT(in("C", {"templates", "list"}).output, HasSubstr("installed, new, newer offered"));
    EXPECT_FALSE(fs::exists(scenes() / "first/more.png"));

    const std::vector<Value> lines = in("C", {"templates", "update", "--all", "--json"}).jsonLines();
    EXPECT_EQ(lines.back().integer("installed"), 1);
    EXPECT_EQ(lines[lines.size() - 2].string("outcome"), "replaced");
    EXPECT_EQ(lines[lines.size() - 2].string("name"), "first");
    EXPECT_TRUE(fs::exists(scenes() / "first/more.png"));
    EXPECT_THAT(installedFolders(), ::testing::UnorderedElementsAre("first", "second"));
    EXPECT_FALSE(listed("C", "first").boolean("newerOffered"));
    EXPECT_EQ(in("C", {"templates", "update", "--all", "--json"}).jsonLines().back().integer("installed"), 0);

    fs::remove_all(folder.path() / "www/templates");
    const Result gone = in("C", {"templates", "install", "third"});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_THAT(gone.errors,
                AllOf(HasSubstr("404"), HasSubstr("templates update"), HasSubstr("nothing was")));
    fs::remove_all(folder.path() / "www/severConfig");
    const Result lost = in("C", {"templates", "update"});
    EXPECT_EQ(lost.exitCode, 1);
    EXPECT_THAT(lost.errors, AllOf(HasSubstr("404"), HasSubstr("a moment ago is kept"),
                                   HasSubstr("address of a template server")));
    EXPECT_TRUE(listed("C", "third").boolean("offered"));
}

TEST_F(TemplatesTest, GetTheirThumbnailFromTheMiddleOfTheVideo) {
    SmallTemplate small = namedTemplate("small", 7);
    Value::Dictionary middle = quad("middle", "$(currentScenePlistROOT)/green.png");
    middle["FpsInfo"] = Value::Dictionary{{"startFps", 3}, {"endFps", 3}};
    small.nodes.push_back(middle);
    const std::string made = author(small);
    writePicture(fs::path(made) / "green.png", 0x00ff00);
    const Result published = publish(made);
    ASSERT_EQ(published.exitCode, 0) << published.output << published.errors;
    const fs::path thumbnail = folder.path() / "www" / placeOf("thumbnails/small.png");
    const auto colour = [](const fs::path& picture) {
        const platform::Bitmap bitmap = pictureIn(picture);
        const uint8_t* centre = bitmap.pixel(bitmap.width / 2, bitmap.height / 2);
        return std::pair(centre[0] > 127, centre[1] > 127);
    };
    EXPECT_EQ(colour(thumbnail), std::pair(false, true));
    EXPECT_EQ(fs::status(thumbnail).permissions() & fs::perms::others_read, fs::perms::others_read)
        << "the server cannot offer it";
}

TEST_F(TemplatesTest, ArePublishedWithoutLossOfWhatIsThere) {
    SmallTemplate small = namedTemplate("a.b", 7);
    small.record["sceneThumbnailPath"] = "$(multiSceneSceneROOT)/a.b/thumb";
    const fs::path made = author(small), list = folder.path() / "www/severConfig/info1-1.plist";
    writePicture(made / "thumb.png", 0x00ff00);
    fs::rename(made / "thumb.png", made / "thumb");
    // The next time it would be packed with all that was published before.
    EXPECT_EQ(multiscene({"template", "publish", made, "--to", made / "www"}).exitCode, 2);
    fs::create_directories(list.parent_path());
    for (const char* other : {"<array/>", "<dict><key>severTempletData</key><dict/></dict>"}) {
        std::ofstream(list) << "<plist>" << other << "</plist>";
        EXPECT_EQ(publish(made).exitCode, 1) << other;
    }
    fs::remove(list);
    EXPECT_EQ(publish(made).exitCode, 0);
    const Value offered = platform::readPropertyList(list).array("severTempletData").front();
    for (const char* key : {"templateUrl", "thumbUrl", "videoPreviewUrl"})
        EXPECT_TRUE(fs::is_regular_file(folder.path() / "www" / offered.string(key))) << offered.string(key);
}

TEST_F(TemplatesTest, CanLieOnAnotherDiskAndBeReadByOthers) {
    const std::string zip = pack(author(namedTemplate("small", 7)), "small.zip");
    const platform::test::TemporaryFolder disk("/dev/shm");
    fs::create_directories(scenes().parent_path());
    fs::create_directory_symlink(disk.path(), scenes());
    for (int time = 0; time < 2; ++time) {
        const Result result = multiscene({"templates", "install", zip, "--replace"});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_THAT(installedFolders(), ::testing::ElementsAre("small"));
    }
    std::ofstream(folder.file("usual")) << "as every new file";
    EXPECT_EQ(fs::status(scenes() / "small/small.plist").permissions(),
              fs::status(folder.file("usual")).permissions());
    EXPECT_EQ(multiscene({"frames", "7", "--at", "0", "-o", folder.file("frames")}).exitCode, 0);
}

TEST_F(TemplatesTest, CanBeListedAndPlayedWhereTheHomeCannotBeWritten) {
    std::ofstream(folder.file("file")) << "no folder";
    const std::string nowhere = folder.file("file/home");
    const auto there = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {program(), "--home", nowhere});
        return run(words);
    };
    const std::string made = author(namedTemplate("small", 7)), zip = pack(made, "small.zip");
    const Result list = there({"templates", "list"});
    EXPECT_EQ(list.exitCode, 0) << list.errors;
    const std::string media = folder.file("inputs.json");
    writePicture(folder.path() / "me.png", 0x0000ff);
    std::ofstream(media) << R"({"title": "Hi", "photo": "me.png"})";
    for (const std::string& source : {made, zip}) {
        const Result video = there({"make", source, "--media", media, "-o", folder.file("out.mp4")});
        EXPECT_EQ(video.exitCode, 0) << video.errors;
        EXPECT_EQ(fs::status(folder.file("out.mp4")).permissions() & fs::perms::owner_read,
                  fs::perms::owner_read);
    }
    const Result install = there({"templates", "install", zip});
    EXPECT_EQ(install.exitCode, 1);
    EXPECT_THAT(install.errors,
                AllOf(HasSubstr("cannot create the folder"), HasSubstr("nothing was installed")));
    const Result unknown = there({"make", "7", "-o", folder.file("out.mp4")});
    EXPECT_EQ(unknown.exitCode, 3) << unknown.errors;
}

TEST_F(TemplatesTest, ManyProcessesShareOneHome) {
    constexpr int kTemplates = 3, kEach = 3;
    std::vector<std::unique_ptr<Process>> running;
    std::vector<std::string> zips;
    for (int index = 0; index < kTemplates; ++index) {
        const std::string name = "t" + std::to_string(index);
        zips.push_back(pack(author(namedTemplate(name, 100 + index)), name + ".zip"));
    }
    for (int round = 0; round < kEach; ++round)
        for (const std::string& zip : zips)
            running.push_back(
                std::make_unique<Process>(command({"templates", "install", zip, "--replace", "--json"})));
    running.push_back(std::make_unique<Process>(command({"templates", "list", "--json"})));
    for (const auto& process : running) {
        const Result result = process->finish();
        EXPECT_EQ(result.exitCode, 0) << result.errors;
    }
    EXPECT_THAT(installedFolders(), ::testing::UnorderedElementsAre("t0", "t1", "t2"));
    const auto listed = multiscene({"templates", "list", "--json"}).jsonLines();
    EXPECT_EQ(std::count_if(listed.begin(), listed.end(),
                            [](const Value& line) { return line.boolean("installed"); }),
              kTemplates);
}

TEST_F(TemplatesTest, StartFromANewOneThatPlaysAtOnce) {
    const std::string made = folder.file("new/my first");
    const Result result = multiscene({"template", "new", made, "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(multiscene({"template", "new", made}).exitCode, 2) << "it was overwritten";
    EXPECT_EQ(multiscene({"check", made}).exitCode, 0);
    const Value shown = [&] {
        EXPECT_EQ(multiscene({"templates", "install", pack(made, "my first.zip")}).exitCode, 0);
        return multiscene({"templates", "show", "my first", "--json"}).jsonLines().back();
    }();
    EXPECT_EQ(shown.integer("id"), result.jsonLines().back().integer("id"));
    EXPECT_EQ(shown.array("inputs").size(), 2u);
}

TEST_F(TemplatesTest, KeepTracksEncrypted) {
    const std::string plain = folder.file("plain.xml"), stored = folder.file("stored.xml");
    const std::string frame =
        "<Frame bottomleftx=\"0\" bottomlefty=\"0\" bottomrightx=\"1\" bottomrighty=\"0\" "
        "toprightx=\"1\" toprighty=\"1\" topleftx=\"0\" toplefty=\"1\"/>";
    std::ofstream(plain) << "<CornerPinInfoDoc><Object>" << frame << frame << "</Object></CornerPinInfoDoc>";
    const Result result = multiscene({"template", "encrypt-track", plain, "-o", stored, "--json"});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.jsonLines().back().integer("frames"), 2);
    EXPECT_THAT(contentOf(stored), AllOf(Not(IsEmpty()), Not(HasSubstr("Frame"))));
    EXPECT_EQ(multiscene({"template", "encrypt-track", stored, "-o", plain}).exitCode, 3);
    EXPECT_THAT(contentOf(plain), HasSubstr("Frame"));
}

TEST_F(TemplatesTest, LimitsAndUnknownWordsAreAnsweredWithoutAHome) {
    EXPECT_THAT(multiscene({"--limits"}).output,
                AllOf(HasSubstr("maxEntries"), HasSubstr("10000"), HasSubstr("maxSceneNodes")));
    EXPECT_EQ(multiscene({"templates", "install", "--limits", "--json"}).jsonLines()[1].string("name"),
              "maxEntries");
    const Result unknown = multiscene({"templates", "instal", "7"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_THAT(unknown.errors, HasSubstr("install"));
    EXPECT_EQ(multiscene({"templates"}).exitCode, 2);
    EXPECT_EQ(multiscene({"templates", "update"}).exitCode, 2) << "no server is set";
    EXPECT_EQ(multiscene({"templates", "update", "--server", "ftp://h/"}).exitCode, 2);
}

}  // namespace multiscene::test
