#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "StaticServer.h"
#include "TemporaryHome.h"
#include "app/Other/QVDownloadInfoManager.h"
#include "app/Other/QVSceneInstallManager.h"
#include "app/author/NewTemplate.h"
#include "app/catalogue/InstalledTemplates.h"
#include "app/catalogue/TemplateOverview.h"
#include "app/server/TemplatePublishing.h"
#include "app/server/UrlText.h"
#include "other/QVUtil.h"
#include "platform/base/NotificationCenter.h"
#include "platform/base/PropertyList.h"
#include "tests/platform/FaultyServer.h"
#include "tests/platform/RawZip.h"

namespace multiscene {
namespace {

namespace fs = std::filesystem;
using platform::DispatchQueue;
using platform::Error;
using platform::ErrorKind;
using platform::Value;
using testing::ElementsAre;
using testing::HasSubstr;

struct RecordedDisplay : SceneInstallDisplay {
    void showProgress(const std::string& text, double fraction) override {
        EXPECT_EQ(text, "Downloading the template");
        fractions.push_back(fraction);
    }
    void showInfo(const std::string& text) override { infos.push_back(text); }
    void showError(const std::string& text) override { errors.push_back(text); }
    void dismiss() override { ++dismissed; }

    std::vector<double> fractions;
    std::vector<std::string> infos, errors;
    int dismissed = 0;
};

class ServerTest : public testing::Test {
  protected:
    void SetUp() override {
        ::setenv("no_proxy", "*", 1);
        manager.setDisplay(display);
        observation = platform::NotificationCenter::shared().addObserver(kSceneInstallSucceed,
                                                                         [this] { ++notifications; });
    }

    InstallReport ended(const std::function<void(QVSceneInstallManager::Completion)>& start) {
        std::optional<InstallReport> report;
        start([&](const InstallReport& ending) { report = ending; });
        DispatchQueue::main().pumpUntil([&] { return report.has_value(); });
        return *report;
    }
    InstallReport installed(const std::string& url) {
        return ended([&](auto completion) { manager.installSceneZipWithUrl(url, {}, completion); });
    }
    fs::path folder(const char* name) const { return home.outside() / name; }
    /// The files of that name in the folders of versions.
    static std::vector<fs::path> versionsOf(const fs::path& offered, const std::string& name) {
        std::vector<fs::path> found;
        for (const auto& version : fs::directory_iterator(offered))
            if (fs::exists(version.path() / name)) found.push_back(version.path() / name);
        return found;
    }
    std::vector<fs::path> hiddenFiles() const {
        std::vector<fs::path> found;
        for (const auto& entry : fs::recursive_directory_iterator(home.home()))
            if (entry.path().filename().string().starts_with(".")) found.push_back(entry.path());
        return found;
    }

    test::TemporaryHome home;
    std::shared_ptr<QVDataManager> catalogue = std::make_shared<QVDataManager>();
    QVSceneInstallManager manager{catalogue};
    QVDownloadInfoManager list;
    std::shared_ptr<RecordedDisplay> display = std::make_shared<RecordedDisplay>();
    platform::NotificationCenter::Token observation;
    int notifications = 0;
};

TEST_F(ServerTest, ARepublishedTemplateIsNoticed) {
    const fs::path author = folder("author-2"), offered = folder("www-2");
    const fs::path made = makeNewTemplate(author, "again", 4720);
    publishTemplate(made, offered);
    const fs::path configuration = offered / "severConfig" / "info1-1.plist";
    platform::writePropertyList(configuration,
                                platform::readPropertyList(configuration).with("isVideoCache", true));
    const test::StaticServer server(offered, folder("nginx-2"));
    list.setServerAddress(server.address());
    const auto isNewerOffered = [&] {
        list.downloadInfo();
        return findTemplateOverview(*catalogue, list, "again")->newerOffered;
    };
    const auto url = [&] { return list.completeUrl(list.findSeverTemplet("again")->templateUrl()); };
    EXPECT_FALSE(isNewerOffered()) << "it is not installed";
    const std::string first = url();
    ASSERT_FALSE(installed(first).failure);
    EXPECT_FALSE(isNewerOffered());
    publishTemplate(made, offered);
    EXPECT_FALSE(isNewerOffered()) << "the same was published again";
    test::writeText(made / "res/more.txt", "more");
    publishTemplate(made, offered);
    EXPECT_TRUE(isNewerOffered());
    test::writeText(made / "res/more.txt", "yet more");
    publishTemplate(made, offered);
    EXPECT_TRUE(isNewerOffered());
    EXPECT_TRUE(list.isVideoCache()) << "publishing keeps what the list says";
    EXPECT_EQ(versionsOf(offered / "templates", "again.zip").size(), 2u) << "the list's and the one before";

    int pieces = 0;
    InstallOptions options;
    options.onReceived = [&](uint64_t, uint64_t) { ++pieces; };
    const auto start = [&](auto completion) { manager.installSceneZipWithUrl(url(), options, completion); };
    EXPECT_EQ(ended(start).result.outcome, InstallOutcome::AlreadyInstalled);
    EXPECT_EQ(pieces, 0) << "it was downloaded for nothing";
    EXPECT_EQ(notifications, 2);
    options.replace = true;
    EXPECT_EQ(ended(start).result.outcome, InstallOutcome::Replaced);
    EXPECT_GT(pieces, 0);
    EXPECT_FALSE(isNewerOffered());
    EXPECT_EQ(display->dismissed, 3);
    EXPECT_TRUE(hiddenFiles().empty()) << hiddenFiles().front();

    EXPECT_THAT(installed(server.address() + "templates/missing.zip").failure->what(), HasSubstr("404"));
    EXPECT_THAT(display->errors, ElementsAre("The installation failed"));
    EXPECT_EQ(notifications, 3);
    EXPECT_THROW(publishTemplate(makeNewTemplate(author, "other", 4720), offered), Error);
    fs::last_write_time(list.saveInfoPath(), fs::file_time_type::clock::now() - std::chrono::hours(50));
    list.setServerAddress(server.address() + "nowhere");
    try {
        list.downloadInfo();
        ADD_FAILURE() << "there was a list";
    } catch (const Error& error) {
        EXPECT_THAT(error.what(), HasSubstr("404: there is no file at this address; the list of 2 days ago"));
    }
    EXPECT_EQ(list.severTemplets().size(), 1u) << "the last good list is lost";
}

TEST_F(ServerTest, AnArchiveOfAnotherNameInstallsNothingAndStillEnds) {
    const fs::path zip = folder("other.zip");
    test::writeText(zip, platform::test::RawZip().add({"T/T.plist", ""}).bytes());
    const auto start = [&](auto completion) {
        manager.installSceneWithZipPath(zip, "other", {}, completion);
    };
    EXPECT_EQ(ended(start).result.outcome, InstallOutcome::NothingInstalled);
    EXPECT_EQ(notifications, 1);
    test::writeText(zip, "no archive");
    EXPECT_TRUE(ended(start).failure);
    EXPECT_EQ(notifications, 2);
    EXPECT_THAT(display->errors, ElementsAre("The installation failed"));
    EXPECT_TRUE(fs::exists(zip)) << "the user's own archive was deleted";
}

TEST_F(ServerTest, ProgressBelowOnePercentIsNotShown) {
    const std::string zip = platform::test::RawZip().add({"T/big", std::string(1'000'000, 'x')}).bytes();
    const size_t first = zip.size() / 200;
    const std::string range = std::to_string(first) + "-" + std::to_string(zip.size() - 1) + "/";
    platform::test::FaultyServer server(
        {{"HTTP/1.1 200 OK\r\nETag: \"1\"\r\nContent-Length: " + std::to_string(zip.size()) + "\r\n\r\n" +
          zip.substr(0, first)},
         {"HTTP/1.1 206 Partial\r\nContent-Range: bytes " + range + std::to_string(zip.size()) +
          "\r\nContent-Length: " + std::to_string(zip.size() - first) + "\r\n\r\n" + zip.substr(first)}});
    std::vector<double> told;
    InstallOptions options;
    options.onStep = [&](const char* step) {
        if (std::string(step) == "downloading") told.push_back(manager.curentProgress());
    };
    const InstallReport report = ended([&](auto completion) {
        manager.installSceneZipWithUrl(server.url("/T.zip?v=1"), options, completion);
    });
    EXPECT_EQ(report.result.name, "T");
    ASSERT_GE(told.size(), 2u);
    EXPECT_NEAR(told[1], 0.005, 0.001) << "the first part did not arrive alone";
    ASSERT_FALSE(display->fractions.empty());
    EXPECT_GT(*std::min_element(display->fractions.begin(), display->fractions.end()), 0.01);
    EXPECT_EQ(display->fractions.back(), 1.0);
    EXPECT_EQ(manager.curentProgress(), 1.0);
}

TEST_F(ServerTest, LeftoversOfAKilledDownloadAreSwept) {
    fs::path partial, archive;
    {
        const TemplateInstallation installation(*catalogue, "K");
        partial = installation.partialDownloadPath();
        archive = installation.archivePath();
        test::writeText(partial, "half");
        test::writeText(archive, "whole");
        TemplateInstallation::recover(*catalogue);
        EXPECT_TRUE(fs::exists(partial)) << "taken from under a running installation";
    }
    TemplateInstallation::recover(*catalogue);
    EXPECT_FALSE(fs::exists(partial) || fs::exists(archive));
}

TEST_F(ServerTest, OnlyTemplatesThatCanBeInstalledArePacked) {
    const fs::path made = makeNewTemplate(folder("packing"), "P", 4713), zip = folder("P.zip");
    test::writeText(made / ".git/config", "hidden");
    packTemplate(made, zip);
    const std::string first = test::readText(zip);
    EXPECT_EQ(first.find(".git"), std::string::npos);
    EXPECT_EQ(TemplateInstallation(*catalogue, "P").install(zip).outcome, InstallOutcome::Installed);

    EXPECT_THROW(
        packTemplate(made, zip, [](const TemplateFolder&) { throw Error(ErrorKind::Template, "ugly"); }),
        Error);
    EXPECT_EQ(test::readText(zip), first) << "a refused template has changed the archive";

    const int64_t free = unusedSceneNumber(*catalogue, "P");
    EXPECT_EQ(unusedSceneNumber(*catalogue, "P"), free);
    EXPECT_FALSE(catalogue->isSignSceneHasWithSid(free));
}

TEST(TemplateNameOfUrlTest, IsTheLastComponentWithoutItsExtension) {
    EXPECT_EQ(templateNameOfUrl("http://h/templates/Birthday.zip"), "Birthday");
    EXPECT_EQ(templateNameOfUrl("http://h/a%20b.v2.zip?x=/y.zip#z"), "a b.v2");
    EXPECT_EQ(templateNameOfUrl("templates/%zz.zip"), "%zz");
    EXPECT_EQ(templateNameOfUrl("http://h/..%2f.zip"), "../");
}

}  // namespace
}  // namespace multiscene
