#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "TemporaryHome.h"
#include "app/Model/QVSeverTempletDataModel.h"
#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/data/QVDataManager.h"
#include "app/language/Strings.h"
#include "platform/base/Json.h"

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
                 {"jName", "誕生日"},
                 {"fpsLength", 250},
                 {"photoTotal", 2},
                 {"sourceType", 4}});
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

TEST_F(CatalogueTest, KeepsOneRowForANumberAndOrdersByInsertion) {
    EXPECT_EQ(manager.insertSignSceneDataWithSignSceneDataModel(model(30)), 30);
    EXPECT_EQ(manager.insertSignSceneDataWithSignSceneDataModel(model(10)), 10);
    EXPECT_EQ(manager.insertSignSceneDataWithSignSceneDataModel(model(30, {{"eName", "again"}})), -1);
    EXPECT_EQ(manager.insertSignSceneDataWithSignSceneDataModel(model(20, {{"sourceType", 5}})), 20);

    EXPECT_THAT(numbers(manager.queryCSignSceneDataWithSid(30)), ElementsAre(30));
    EXPECT_THAT(numbers(manager.queryCSignSceneDataWithSourceType(4)), ElementsAre(30, 10));
    EXPECT_THAT(numbers(manager.allSignSceneData()), ElementsAre(30, 10, 20));
    EXPECT_TRUE(manager.isSignSceneHasWithSid(10));
    EXPECT_FALSE(manager.isSignSceneHasWithSid(11));
    EXPECT_FALSE(manager.querySceneWithSid(11).has_value());
}

TEST_F(CatalogueTest, ARecordComesBackWithItsPathsExpandedAndItsDescription) {
    const Value description = platform::parseJson(R"({"userInputArray": [
            {"userInputType": 0, "renderMapKey": "title", "maxLenght": 12, "maxLine": 2, "is3DText": true,
             "englishPlaceholder": "Name", "japanesePlaceholder": "名前"},
            {"userInputType": 2, "renderMapKey": "unknown"},
            {"userInputType": "1", "renderMapKey": "photo", "aspectWidth": 3, "aspectHeight": 4}],
            "mediaSize": "540,960", "videoFrameRate": 25, "PIPTempletType": 3,
            "bgAudioPath": "$(currentScenePlistROOT)/m.mp3", "sceneGroup": [{"mainSceneId": 5}]})",
                                                  "test");
    ASSERT_EQ(
        manager.installMultiSceneTemplate(Value::Dictionary{
            {"installScenes", Value::Array{record(5, {{"wechartTempletInfo", description}}), record(6)}}}),
        2);

    QVDataManager reopened(QVDataManager::databasePath());
    const auto found = reopened.queryCSignSceneDataWithSid(5);
    ASSERT_EQ(found.size(), 1u);
    const QVTempletDataModel& stored = found.front();
    const std::string folder = (home.home() / "qvMultiSceneRender/scene/T/").string();
    EXPECT_EQ(stored.scenePlistPath(), folder + "scene.plist");
    EXPECT_EQ(stored.sceneResourceFolderPath(), folder);
    EXPECT_EQ(stored.sceneThumbnailPath(), "");
    EXPECT_EQ(stored.fpsLength(), 250);
    EXPECT_EQ(stored.photoTotal(), 2);
    EXPECT_EQ(stored.wechartTempletInfo(), description);
    EXPECT_EQ(stored.mediaFormat(), (MediaFormat{540, 960, 25}));
    EXPECT_EQ(stored.PIPTempletType(), 3);
    EXPECT_EQ(stored.sceneGroup().size(), 1u);
    EXPECT_EQ(stored.bgAudioPath(), "$(currentScenePlistROOT)/m.mp3");

    ASSERT_EQ(stored.userInputInfo().size(), 2u);
    const auto* text = dynamic_cast<const QVUserTextInputModel*>(stored.userInputInfo()[0].get());
    const auto* photo = dynamic_cast<const QVUserPhotoInputModel*>(stored.userInputInfo()[1].get());
    ASSERT_TRUE(text && photo);
    EXPECT_EQ(text->renderMapKey(), "title");
    EXPECT_EQ(text->maxLenght(), 12);
    EXPECT_EQ(text->maxLine(), 2);
    EXPECT_TRUE(text->is3DText());
    EXPECT_EQ(text->placeholder(), "Name");
    EXPECT_EQ(photo->aspectWidth(), 3);
    EXPECT_EQ(photo->aspectHeight(), 4);

    EXPECT_EQ(reopened.queryCSignSceneDataWithSid(6).front().mediaFormat(), (MediaFormat{720, 1280, 30}));
    EXPECT_EQ(reopened.querySceneWithSid(5)->scenePlistPath, folder + "scene.plist");
}

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

TEST_F(CatalogueTest, LanguageOfTheEnvironment) {
    ::setenv("LANG", "ja_JP.UTF-8", 1);
    ::setenv("LC_MESSAGES", "", 1);
    ::unsetenv("LC_ALL");
    setUserLanguage("");
    EXPECT_EQ(languageWord(), "japanese");
    ::setenv("LC_ALL", "zh_TW.UTF-8", 1);
    setUserLanguage("");
    EXPECT_EQ(languageWord(), "chinese");
    ::setenv("LC_ALL", "C", 1);
    setUserLanguage("");
    EXPECT_EQ(languageWord(), "english");
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

TEST(SeverTempletTest, OldProgramsAreToldToUpdate) {
    const auto offered = [](Value minVersion) {
        return QVSeverTempletDataModel::severTempletDataModelWithDic(
            Value::Dictionary{{"minVersion", std::move(minVersion)}});
    };
    int alerts = 0;
    const auto count = [&](const AlertView& alert) {
        ++alerts;
        EXPECT_FALSE(alert.message.empty() || alert.ok.empty() || alert.cancel.empty());
    };
    EXPECT_TRUE(offered(1.0).checkShowTemplateVersionSupport(count));
    EXPECT_TRUE(offered("0.9").checkShowTemplateVersionSupport(count));
    EXPECT_EQ(alerts, 0);
    EXPECT_FALSE(offered("1.05").checkShowTemplateVersionSupport(count));
    EXPECT_EQ(alerts, 1);

    int opened = 0;
    QVSeverTempletDataModel::alertView(0, [&] { ++opened; });
    EXPECT_EQ(opened, 0);
    QVSeverTempletDataModel::alertView(1, [&] { ++opened; });
    EXPECT_EQ(opened, 1);
}

}  // namespace
}  // namespace multiscene
