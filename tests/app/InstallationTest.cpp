#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

#include "TemporaryHome.h"
#include "app/catalogue/InstalledTemplates.h"
#include "app/installation/FolderSwap.h"
#include "app/installation/TemplateInstallation.h"
#include "app/installation/TemplateLocks.h"
#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/PropertyList.h"
#include "tests/platform/RawZip.h"

namespace multiscene {
namespace {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::Value;
using testing::ElementsAre;
using testing::HasSubstr;

/// A template's own file: scenes with these numbers, whose scene files are scene<number>.plist.
std::string plistOf(const std::string& name, const std::vector<int64_t>& numbers) {
    Value::Array records;
    for (const int64_t sId : numbers)
        records.push_back(Value::Dictionary{
            {"sId", sId},
            {"eName", name + " scene"},
            {"scenePlistPath", "$(multiSceneSceneROOT)/" + name + "/scene" + std::to_string(sId) + ".plist"},
            {"sceneResourceFolderPath", "$(multiSceneSceneROOT)/" + name + "/"}});
    return platform::propertyListXml(Value::Dictionary{{"installScenes", std::move(records)}});
}

/// An archive of such a template; every file says which version of the template it belongs to.
std::string archiveOf(const std::string& name, const std::vector<int64_t>& numbers,
                      const std::string& version) {
    platform::test::RawZip zip;
    zip.add({.name = name + "/" + name + ".plist", .content = plistOf(name, numbers), .deflated = true});
    zip.add({name + "/version", version});
    zip.add({name + "/media/picture", std::string(100'000, version[0])});
    zip.add({"__MACOSX/" + name + "/._version", "junk"});
    for (const int64_t sId : numbers) zip.add({name + "/scene" + std::to_string(sId) + ".plist", version});
    return zip.bytes();
}

class InstallationTest : public testing::Test {
  protected:
    fs::path archive(const std::string& name, const std::vector<int64_t>& numbers,
                     const std::string& version = "1") {
        const fs::path file = home.outside() / version / (name + ".zip");
        test::writeText(file, archiveOf(name, numbers, version));
        return file;
    }
    InstallResult install(const std::string& name, const fs::path& file, InstallOptions options = {}) {
        return TemplateInstallation(catalogue, name, std::move(options)).install(file);
    }
    InstallResult install(const std::string& name, const std::vector<int64_t>& numbers,
                          const std::string& version = "1", bool replace = false) {
        InstallOptions options;
        options.replace = replace;
        return install(name, archive(name, numbers, version), options);
    }
    std::string failureOf(const std::function<void()>& work) {
        try {
            work();
        } catch (const Error& failure) {
            return failure.what();
        }
        return "";
    }
    std::vector<int64_t> numbers(QVDataManager& manager, const std::string& name) {
        std::vector<int64_t> result;
        if (const auto found = findInstalledTemplate(manager, name))
            for (const auto& record : found->records) result.push_back(record.sId());
        return result;
    }
    fs::path scenes() const { return home.home() / "qvMultiSceneRender/scene"; }
    std::string versionOnDisk(const std::string& name) const {
        return test::readText(scenes() / name / "version");
    }

    /// Everything about a template that must change together: "rows/files", "" for absent.
    std::string state(QVDataManager& manager, const std::string& name) {
        std::string rows;
        for (const int64_t sId : numbers(manager, name)) rows += std::to_string(sId) + " ";
        std::string files;
        if (fs::exists(scenes() / name)) {
            files = versionOnDisk(name);
            const auto found = findInstalledTemplate(manager, name);
            if (!found) return "/files without rows";
            for (const auto& record : found->records) files += test::readText(record.scenePlistPath());
            if (test::readText(scenes() / name / "media/picture") != std::string(100'000, files[0]))
                files += "?";
        }
        return rows + "/" + files;
    }
    /// Names in the scene folder, and hidden ones too: nothing may be left over.
    std::vector<std::string> sceneFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(scenes())) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }

    test::TemporaryHome home;
    QVDataManager catalogue{QVDataManager::databasePath()};
};

TEST_F(InstallationTest, RefusalsLeaveEverythingAsItWas) {
    install("T", {1, 2});
    EXPECT_THAT(failureOf([&] { install("U", {3, 2}); }), HasSubstr("2 belongs to the template \"T\""));
    EXPECT_THAT(failureOf([&] {
                    install("U", {3, 2}, "1", true);
                }),
                HasSubstr("belongs to the template \"T\""));
    EXPECT_THAT(failureOf([&] { install("T", {5}); }), HasSubstr("another template of this name"));
    const fs::path broken = home.outside() / "T.zip";
    const std::string whole = archiveOf("T", {1, 2}, "2");
    for (const size_t length : {size_t(0), size_t(100), whole.size() / 2, whole.size() - 1}) {
        test::writeText(broken, whole.substr(0, length));
        EXPECT_NE(failureOf([&] { install("T", broken, {.replace = true}); }), "");
    }
    test::writeText(broken, platform::test::RawZip().add({"T/T.plist", plistOf("T", {1})}).bytes());
    EXPECT_THAT(failureOf([&] { install("T", broken, {.replace = true}); }),
                HasSubstr("scene1.plist is missing"));
    test::writeText(broken, platform::test::RawZip().add({"T/T.plist", plistOf("V", {9})}).bytes());
    EXPECT_THAT(failureOf([&] { install("T", broken, {.replace = true}); }), HasSubstr("template's folder"));
    const auto refuse = [](const TemplateFolder&) { throw Error(ErrorKind::Template, "ugly"); };
    EXPECT_THAT(failureOf([&] {
                    install("T", archive("T", {1, 2}, "2"), {.replace = true, .judge = refuse});
                }),
                HasSubstr("ugly"));
    EXPECT_THAT(
        failureOf([&] {
            install("T", archive("T", {1, 2}, "2"), {.replace = true, .isCancelled = [] { return true; }});
        }),
        HasSubstr("cancelled"));
    for (const char* name : {"", "..", ".hidden", "a/b", "a\nb"})
        EXPECT_THROW(install(name, broken), Error) << name;

    EXPECT_EQ(state(catalogue, "T"), "1 2 /111");
    EXPECT_THAT(sceneFolder(), ElementsAre("T"));
}

/// What somebody else has unpacked, and says of it, may be anything.
TEST_F(InstallationTest, NothingIsBelievedOfWhatWasUnpackedElsewhere) {
    install("T", {1});
    const fs::path zip = archive("U", {2}), into = home.home() / "jobs" / "1";
    const auto unpacked = TemplateInstallation::unpack(zip, "U", into);
    ASSERT_TRUE(unpacked.folder) << unpacked.remark;
    const auto takeIn = [&](const std::function<void(TemplateFolder&)>& falsify) {
        TemplateFolder told = *unpacked.folder;
        falsify(told);
        return failureOf([&] { TemplateInstallation(catalogue, "U").takeIn(told, zip); });
    };
    fs::create_symlink(home.outside(), into / "U" / "link");
    EXPECT_THAT(takeIn([](auto&) {}), HasSubstr("is a link"));
    fs::remove(into / "U" / "link");
    EXPECT_THAT(takeIn([](TemplateFolder& told) {
                    told.records[0].setScenePlistPath("$(multiSceneSceneROOT)/T/scene1.plist");
                }),
                HasSubstr("template's folder"));
    EXPECT_EQ(state(catalogue, "T"), "1 /11");
    EXPECT_EQ(state(catalogue, "U"), "/");

    TemplateInstallation::unpack(zip, "U", into);
    EXPECT_EQ(takeIn([](auto&) {}), "");
    EXPECT_EQ(state(catalogue, "U"), "2 /11");
    EXPECT_THAT(sceneFolder(), ElementsAre("T", "U"));
}

TEST_F(InstallationTest, WaitingForAnotherProgramCanBeCancelled) {
    const auto lock = lockForChange("T", std::chrono::milliseconds(0));
    int asked = 0;
    EXPECT_THAT(
        failureOf([&] { install("T", archive("T", {1}), {.isCancelled = [&] { return ++asked > 2; }}); }),
        HasSubstr("cancelled"));
}

TEST_F(InstallationTest, FilesOrRowsThatAreThereAloneArePutRight) {
    install("T", {1});
    fs::remove_all(scenes() / "T");
    EXPECT_EQ(install("T", {1}, "2").outcome, InstallOutcome::Installed);
    EXPECT_EQ(state(catalogue, "T"), "1 /22");
    fs::remove_all(scenes() / "T");
    EXPECT_EQ(TemplateInstallation(catalogue, "T").remove().outcome, InstallOutcome::Removed);

    test::writeText(scenes() / "U/note", "by hand");
    EXPECT_THAT(failureOf([&] { install("U", {2}); }), HasSubstr("without being installed"));
    EXPECT_EQ(test::readText(scenes() / "U/note"), "by hand");
}

TEST_F(InstallationTest, WhatFailsAfterTheChangeIsNoFailure) {
    install("T", {1});
    platform::Database other(QVDataManager::databasePath());
    other.execute(
        "CREATE TRIGGER broken BEFORE DELETE ON installJournal BEGIN SELECT RAISE(ABORT, 'disk error'); END");
    EXPECT_EQ(failureOf([&] { EXPECT_EQ(install("T", {2}, "2", true).outcome, InstallOutcome::Replaced); }),
              "");
    EXPECT_EQ(state(catalogue, "T"), "2 /22");
    other.execute("DROP TRIGGER broken");
    TemplateInstallation::recover(catalogue);
    EXPECT_EQ(state(catalogue, "T"), "2 /22");
    EXPECT_THAT(sceneFolder(), ElementsAre("T"));
    EXPECT_TRUE(InstallJournal(catalogue).pending().empty());
}

TEST_F(InstallationTest, ACatalogueThatCannotBeWrittenCanBeRead) {
    const std::string file = QVDataManager::databasePath();
    {
        QVDataManager first(file);
        TemplateInstallation(first, "T").install(archive("T", {7, 8}));
    }
    // The index that lies beside an open database cannot be made, as on a full or read-only disk.
    fs::create_directory(file + "-shm");
    fs::create_directory(file + "-wal");
    QVDataManager readOnly(file);
    readOnly.checkUsable();
    TemplateInstallation::recover(readOnly);
    EXPECT_EQ(state(readOnly, "T"), "7 8 /111");
    EXPECT_NE(failureOf([&] { TemplateInstallation(readOnly, "T").remove(); }), "");
    EXPECT_NE(failureOf([&] { TemplateInstallation(readOnly, "U").install(archive("U", {9})); }), "");
    EXPECT_THAT(sceneFolder(), ElementsAre("T"));
    EXPECT_EQ(state(readOnly, "T"), "7 8 /111");
}

/// Runs a change in a process of its own and kills it at the given step. Returns the name of that step, or
/// nothing when the change ended before.
std::string killedAt(int wanted, const std::function<void(InstallOptions)>& change) {
    int channel[2];
    if (::pipe(channel) != 0) return "no pipe";
    const pid_t child = ::fork();
    if (child == 0) {
        int count = 0;
        InstallOptions options;
        options.replace = true;
        options.onStep = [&](const char* step) {
            if (count++ != wanted) return;
            (void)!::write(channel[1], step, strlen(step));
            ::raise(SIGKILL);
        };
        change(std::move(options));
        ::_exit(0);
    }
    ::close(channel[1]);
    char step[64] = "";
    (void)!::read(channel[0], step, sizeof step - 1);
    ::close(channel[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status) ? step : "";
}

TEST_F(InstallationTest, AKillAtAnyStepLeavesTheOldOrTheNewNeverAMixture) {
    archive("T", {1, 2}, "1");
    archive("T", {2, 3}, "2");
    const std::string kBefore = "1 2 /111", kAfter = "2 3 /222", kNone = "/";
    const auto installed = [&](const char* version) {
        return [this, version](InstallOptions options) {
            QVDataManager own(QVDataManager::databasePath());
            TemplateInstallation(own, "T", std::move(options)).install(home.outside() / version / "T.zip");
        };
    };
    const auto removed = [](InstallOptions options) {
        QVDataManager own(QVDataManager::databasePath());
        TemplateInstallation(own, "T", std::move(options)).remove();
    };
    const struct {
        std::function<void(InstallOptions)> change;
        std::string before, after;
    } changes[] = {
        {installed("1"), kNone, kBefore}, {installed("2"), kBefore, kAfter}, {removed, kBefore, kNone}};

    installed("1")({});
    const fs::path withFirst = home.outside() / "with first";
    fs::rename(home.home(), withFirst);

    for (const auto& [change, before, after] : changes) {
        bool committed = false;
        for (int wanted = 0;; ++wanted) {
            fs::remove_all(home.home());
            if (before != kNone) fs::copy(withFirst, home.home(), fs::copy_options::recursive);
            const std::string step = killedAt(wanted, change);
            committed = committed || step == "committed";
            QVDataManager own(QVDataManager::databasePath());
            TemplateInstallation::recover(own);
            EXPECT_EQ(state(own, "T"), committed ? after : before) << "killed at " << step;
            EXPECT_EQ(sceneFolder().size(), fs::exists(scenes() / "T") ? 1u : 0u)
                << "leftovers after " << step;
            if (step.empty()) break;
            if (committed) continue;
            change({.replace = true});
            EXPECT_EQ(state(own, "T"), after) << "cannot go on after " << step;
        }
        EXPECT_TRUE(committed) << "the steps are not reported";
    }
}

TEST_F(InstallationTest, AKillDuringRecoveryIsRecoveredToo) {
    install("T", {1, 2});
    const fs::path second = archive("T", {2, 3}, "2");
    // Killed with the new folder in place and the rows not yet committed.
    const auto replace = [&](InstallOptions options) {
        QVDataManager own(QVDataManager::databasePath());
        const auto tell = options.onStep;
        options.onStep = [tell](const char* step) {
            if (std::string(step) == "moved") tell(step);
        };
        TemplateInstallation(own, "T", std::move(options)).install(second);
    };
    ASSERT_EQ(killedAt(0, replace), "moved");
    EXPECT_EQ(versionOnDisk("T"), "2");
    // What a recovery that is killed after its swap leaves: the old folder back in place, the announcement
    // there.
    swapFolders(scenes() / "T", scenes() / ".staging-T/T");
    TemplateInstallation::recover(catalogue);
    EXPECT_EQ(state(catalogue, "T"), "1 2 /111");
    EXPECT_THAT(sceneFolder(), ElementsAre("T"));
}

TEST_F(InstallationTest, FilesInUseAreNotExchanged) {
    install("T", {7}, "1");
    InstallOptions options;
    options.replace = true;
    options.patience = std::chrono::milliseconds(0);
    {
        const auto reader = lockForUse("T", options.patience), another = lockForUse("T", options.patience);
        const fs::path second = archive("T", {7}, "2");
        EXPECT_THAT(failureOf([&] { install("T", second, options); }), HasSubstr("a video is being made"));
        EXPECT_THAT(failureOf([&] { TemplateInstallation(catalogue, "T", options).remove(); }),
                    HasSubstr("a video is being made"));
        EXPECT_EQ(state(catalogue, "T"), "7 /11");
        EXPECT_THAT(sceneFolder(), ElementsAre("T"));
    }
    EXPECT_EQ(install("T", archive("T", {7}, "2"), options).outcome, InstallOutcome::Replaced);
}

TEST_F(InstallationTest, SwapsByRenamesCanBeSettledAfterEveryOne) {
    const fs::path folder = home.outside() / "a", other = home.outside() / "b",
                   parked = home.outside() / "b.swap";
    const auto content = [&] { return test::readText(folder / "f") + test::readText(other / "f"); };
    test::writeText(folder / "f", "a");
    test::writeText(other / "f", "b");
    swapFolders(folder, other, SwapMethod::ByRenames);
    EXPECT_EQ(content(), "ba");
    swapFolders(folder, other, SwapMethod::InOneStep);
    EXPECT_EQ(content(), "ab");

    fs::rename(folder, parked);
    settleSwap(folder, other);
    EXPECT_EQ(content(), "ab");
    fs::rename(folder, parked);
    fs::rename(other, folder);
    settleSwap(folder, other);
    EXPECT_EQ(content(), "ba");
    fs::remove_all(other);
    swapFolders(folder, other);
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_EQ(test::readText(other / "f"), "b");
}

}  // namespace
}  // namespace multiscene
