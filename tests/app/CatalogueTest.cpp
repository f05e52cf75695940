#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "TemporaryHome.h"
#include "app/data/QVDataManager.h"
#include "app/language/Strings.h"

namespace multiscene {
namespace {

using platform::Value;
using testing::ElementsAre;

Value record(int64_t sId, Value::Dictionary more = {}) {
    more.insert({{"sId", sId},
                 {"scenePlistPath", "$(multiSceneSceneROOT)/T/scene.plist"},
                 {"sceneResourceFolderPath", "$(multiSceneSceneROOT)/T/"},
                 {"cName", "生日"},
                 {"eName", "Birthday"},
                 {"jName", "誕生日"}});
    return more;
}

QVTempletDataModel model(int64_t sId, Value::Dictionary more = {}) {
    return QVTempletDataModel::templetDataModelWithDic(record(sId, std::move(more)));
}

std::vector<int64_t> numbers(const std::vector<QVTempletDataModel>& models) {
    std::vector<int64_t> result;
    for (const auto& each : models) result.push_back(each.sId());
    return result;
}

class CatalogueTest : public testing::Test {
  protected:
    void TearDown() override { setUserLanguage(""); }

    test::TemporaryHome home;
    QVDataManager manager{QVDataManager::databasePath()};
};

TEST_F(CatalogueTest, NamesFollowTheLanguageInWhichTheyWereStored) {
    setUserLanguage("ja");
    EXPECT_EQ(model(1).sceneName(), "誕生日");
    manager.insertSignSceneDataWithSignSceneDataModel(model(1));
    setUserLanguage("zh");
    EXPECT_EQ(model(2).sceneName(), "生日");
    EXPECT_EQ(manager.queryCSignSceneDataWithSid(1).front().sceneName(), "誕生日");
    setUserLanguage("fr");
    EXPECT_EQ(model(2).sceneName(), "Birthday");
    const auto chineseAlone = QVTempletDataModel::templetDataModelWithDic(Value::Dictionary{
        {"cName", "生日"},
        {"eName", ""},
        {"wechartTempletInfo", Value::Dictionary{{"userInputArray", Value::Array{Value::Dictionary{
                                                                        {"chinesePlaceholder", "名字"}}}}}}});
    EXPECT_EQ(chineseAlone.sceneName(), "生日");
    EXPECT_EQ(chineseAlone.userInputInfo().front()->placeholder(), "名字");
    EXPECT_EQ(localizedString("Installation failed"), "The installation failed");
    EXPECT_EQ(localizedString("no such text"), "");
}

TEST_F(CatalogueTest, FailuresAnswerWithNothingAndAreTold) {
    manager.insertSignSceneDataWithSignSceneDataModel(model(1));
    manager.transaction([](platform::Database& database) {
        database.execute("UPDATE signSceneTable SET wechartTempletInfo = '{\"broken' WHERE sId = 1");
    });
    EXPECT_TRUE(manager.queryCSignSceneDataWithSid(1).front().userInputInfo().empty());

    EXPECT_NO_THROW(manager.checkUsable());
    const auto damaged = home.outside() / "damaged.db";
    test::writeText(damaged, std::string(4096, 'x'));
    QVDataManager broken(damaged.string());
    EXPECT_TRUE(broken.queryCSignSceneDataWithSid(1).empty());
    EXPECT_EQ(broken.insertSignSceneDataWithSignSceneDataModel(model(1)), -1);
    try {
        broken.checkUsable();
        FAIL() << "a damaged catalogue passes for an empty one";
    } catch (const platform::Error& failure) {
        EXPECT_EQ(failure.file(), damaged.string());
    }
}

TEST_F(CatalogueTest, ATransactionIsAllOrNothing) {
    EXPECT_THROW(manager.transaction([&](platform::Database&) {
        manager.insertSignSceneDataWithSignSceneDataModel(model(1));
        throw platform::Error(platform::ErrorKind::Failed, "stop");
    }),
                 platform::Error);
    EXPECT_FALSE(manager.isSignSceneHasWithSid(1));
    EXPECT_EQ(manager.insertSignSceneDataWithSignSceneDataModel(model(1)), 1);
}

/// For a process that may not open the catalogue.
TEST_F(CatalogueTest, ACopyIsReadAndCannotBeChanged) {
    manager.insertSignSceneDataWithSignSceneDataModel(
        model(1, {{"wechartTempletInfo", Value::Dictionary{}}}));
    std::string image = manager.image();
    manager.insertSignSceneDataWithSignSceneDataModel(model(2));
    QVDataManager::readCopies([&image] { return image; });
    QVDataManager copy;
    copy.checkUsable();
    EXPECT_THAT(numbers(copy.allSignSceneData()), ElementsAre(1));
    EXPECT_EQ(copy.insertSignSceneDataWithSignSceneDataModel(model(3)), -1);
    EXPECT_THROW(copy.transaction([](platform::Database&) {}), platform::Error);
    image = manager.image();
    copy.readAnew();
    EXPECT_THAT(numbers(copy.allSignSceneData()), ElementsAre(1, 2));
    image.clear();
    copy.readAnew();
    EXPECT_TRUE(copy.allSignSceneData().empty());
    QVDataManager::readCopies({});
}

TEST_F(CatalogueTest, SeveralConnectionsInsertingTheSameScenesLeaveOneRowEach) {
    std::vector<std::thread> writers;
    std::atomic<int> added = 0;
    for (int writer = 0; writer < 4; ++writer)
        writers.emplace_back([&] {
            QVDataManager own(QVDataManager::databasePath());
            for (int64_t sId = 1; sId <= 20; ++sId)
                if (own.insertSignSceneDataWithSignSceneDataModel(model(sId)) == sId) ++added;
        });
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(added, 20);
    EXPECT_EQ(manager.allSignSceneData().size(), 20u);
}

TEST_F(CatalogueTest, TheTableIsTheOneThatFilesInUseHave) {
    manager.checkUsable();
    manager.transaction([](platform::Database& database) {
        auto query = database.prepare("SELECT sql FROM sqlite_master WHERE name = 'signSceneTable'");
        ASSERT_TRUE(query.step());
        EXPECT_THAT(query.text("sql"), testing::HasSubstr("obligate ARCHAR(255) DEFAULT ('') NOT NULL"));
    });
}

}  // namespace
}  // namespace multiscene
