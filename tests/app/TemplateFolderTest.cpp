#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TemporaryHome.h"
#include "app/Model/MediaFormat.h"
#include "app/template/TemplateFolder.h"
#include "platform/base/Error.h"
#include "platform/base/PropertyList.h"

namespace multiscene {
namespace {

using platform::Value;
using testing::HasSubstr;

Value oneRecord(Value::Dictionary record) {
    record.insert({{"sId", 1}, {"scenePlistPath", "$(multiSceneSceneROOT)/T/scene.plist"}});
    return Value::Dictionary{{"installScenes", Value::Array{std::move(record)}}};
}

class TemplateFolderTest : public testing::Test {
  protected:
    std::string failureOf(const std::filesystem::path& read) {
        try {
            requireOwnPaths(readTemplateFolder(read));
        } catch (const platform::Error& failure) {
            EXPECT_EQ(failure.kind(), platform::ErrorKind::Template);
            return failure.what();
        }
        return "";
    }
    std::string failureOfContent(const Value& content) {
        platform::createFolders(folder);
        platform::writePropertyList(folder / "T.plist", content);
        return failureOf(folder);
    }

    test::TemporaryHome home;
    std::filesystem::path folder = home.outside() / "T";
};

TEST_F(TemplateFolderTest, ReadsItsRecords) {
    EXPECT_EQ(failureOfContent(oneRecord({{"sId", "12"}, {"eName", "Birthday"}})), "");
    const TemplateFolder read = readTemplateFolder(folder / "");
    EXPECT_EQ(read.name, "T");
    ASSERT_EQ(read.records.size(), 1u);
    EXPECT_EQ(read.records[0].sId(), 12);
}

TEST_F(TemplateFolderTest, SaysWhereItIsWrong) {
    EXPECT_THAT(failureOf(folder), HasSubstr("does not exist"));
    test::writeText(home.outside() / "file", "");
    EXPECT_THAT(failureOf(home.outside() / "file"), HasSubstr("is no folder"));
    test::writeText(folder / "other.plist", "");
    EXPECT_THAT(failureOf(folder), HasSubstr("T.plist"));
    test::writeText(folder / "T.plist", "<plist><dict><key>installScenes");
    EXPECT_THAT(failureOf(folder), HasSubstr("T.plist"));

    const Value inputs = Value::Dictionary{{"userInputArray", Value::Array{"text"}}};
    const struct {
        Value content;
        std::string key;
    } cases[] = {
        {Value::Array{}, "T.plist"},
        {Value::Dictionary{}, "installScenes"},
        {Value::Dictionary{{"installScenes", Value::Dictionary{}}}, "installScenes"},
        {Value::Dictionary{{"installScenes", Value::Array{}}}, "installScenes"},
        {Value::Dictionary{{"installScenes", Value::Array{5}}}, "installScenes[0]"},
        {oneRecord({{"sId", "twelve"}}), "installScenes[0].sId"},
        {oneRecord({{"sId", -4}}), "installScenes[0].sId"},
        {oneRecord({{"scenePlistPath", ""}}), "installScenes[0].scenePlistPath"},
        {oneRecord({{"scenePlistPath", "scene.plist"}}), "installScenes[0].scenePlistPath"},
        {oneRecord({{"scenePlistPath", "/etc/passwd"}}), "installScenes[0].scenePlistPath"},
        {oneRecord({{"scenePlistPath", "$(multiSceneSceneROOT)/T/../U/s.plist"}}), "scenePlistPath"},
        {oneRecord({{"sceneResourceFolderPath", "$(multiSceneSceneROOT)/TT/"}}), "sceneResourceFolderPath"},
        {oneRecord({{"eName", 5}}), "installScenes[0].eName"},
        {oneRecord({{"wechartTempletInfo", "{}"}}), "installScenes[0].wechartTempletInfo"},
        {oneRecord({{"wechartTempletInfo", inputs}}), "wechartTempletInfo.userInputArray[0]"},
        {oneRecord({{"wechartTempletInfo", Value::Dictionary{{"mediaSize", "720x1280"}}}}), "mediaSize"},
        {Value::Dictionary{{"installScenes", Value::Array{oneRecord({}).array("installScenes")[0],
                                                          oneRecord({}).array("installScenes")[0]}}},
         "installScenes[1].sId"},
    };
    for (const auto& [content, key] : cases) EXPECT_THAT(failureOfContent(content), HasSubstr(key));
}

TEST_F(TemplateFolderTest, NamesAndSizesHaveLimits) {
    for (const std::string name : {"T", "Grüße 2", "a..b"}) EXPECT_TRUE(isTemplateName(name)) << name;
    for (const std::string& name : {std::string(), std::string(".T"), std::string("a/b"), std::string("a\\b"),
                                    std::string("a\n"), std::string("a\x7f"), std::string(201, 'a')})
        EXPECT_FALSE(isTemplateName(name)) << name;
    EXPECT_FALSE(isTooLarge({4096, 2304}));
    for (const MediaSize size : {MediaSize{4096, 2306}, MediaSize{8194, 2}, MediaSize{2, 8194}})
        EXPECT_TRUE(isTooLarge(size)) << size.width;

    const std::string scenes = QVUtil::scenePath();
    EXPECT_EQ(templateOwning(scenes + "T/scene.plist"), "T");
    EXPECT_EQ(templateOwning(scenes + "../elsewhere/scene.plist"), "");
    EXPECT_EQ(templateOwning(scenes), "");
    EXPECT_EQ(templateOwning(""), "");
    TemplateFolder nameless;
    nameless.name = "T";
    EXPECT_EQ(displayName(nameless), "T");
    const Value many(Value::Array(1001, oneRecord({}).array("installScenes")[0]));
    EXPECT_THAT(failureOfContent(Value::Dictionary{{"installScenes", many}}), HasSubstr("1001 records"));
}

TEST_F(TemplateFolderTest, DoesNotReadThroughALinkThatLeavesTheFolder) {
    platform::createFolders(folder);
    platform::writePropertyList(home.outside() / "elsewhere.plist", oneRecord({}));
    std::filesystem::create_symlink(home.outside() / "elsewhere.plist", folder / "T.plist");
    EXPECT_THAT(failureOf(folder), HasSubstr("lies outside"));
}

}  // namespace
}  // namespace multiscene
