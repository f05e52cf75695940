// Property lists and what is read from them: scenes, groups, templates' own files, the list of a server,
// tracks.
#include "app/Model/QVSeverTempletDataModel.h"
#include "app/check/Judgement.h"
#include "app/template/TemplateFolder.h"
#include "app/template/TemplateLength.h"
#include "core/SceneNodes.h"
#include "format/TrackFile.h"
#include "other/QVMultiSceneGropPlistFileManager.h"
#include "painter/SoftwarePainter.h"
#include "platform/base/Json.h"
#include "platform/base/PropertyList.h"
#include "platform/base/PropertyListFaults.h"
#include "platform/gl/GLContext.h"
#include "sceneFile/SceneLimits.h"
#include "sceneFile/SceneValidation.h"
#include "tests/engine/FakeDriver.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Scratch.h"

namespace multiscene::fuzz {

using platform::Value;

namespace {

Value listOf(Bytes bytes) { return platform::parsePropertyList(bytes, "fuzz.plist"); }

class NoScenes : public SceneCatalogue {
    std::optional<SceneConfigData> querySceneWithSid(int64_t) override { return std::nullopt; }
};

/// GL only where something asks for it.
SoftwarePainter& painter() {
    static platform::FileGate gate;
    static SoftwarePainter painter(
        [] { return platform::GLContext::create(platform::GLContext::Driver::Software); }, gate, 1);
    return painter;
}

void paint(QVScene3D& scene) {
    constexpr int side = 16;
    uint8_t pixels[side * side * 4];
    painter().beginFrame(side, side, 0);
    scene.render(painter());
    painter().endFrame({.pixels = pixels, .stride = side * 4, .width = side, .height = side});
}

void playFrames(const Value& content) {
    FakeDriver driver;
    driver.width = driver.height = 16;
    driver.shownBy = &painter();
    const auto scene = QVScene3D::initRenderManager(driver);
    for (const Value& node : content.array("object3D"))
        scene->addChild(SceneNodes::object3DWithInfo(node, scene));
    for (int64_t number = 0; number < 3; ++number) {
        scene->setCurrentRenderTime(frame(number));
        scene->updateData();
        scene->tweens().update();
        scene->updateMatrix();
        paint(*scene);
        scene->renderComplete();
    }
}

}  // namespace

void playPropertyList(Bytes bytes) {
    for (const platform::PropertyListFault& fault : platform::propertyListFaults(bytes))
        require(fault.line >= 1 && fault.message.size() < 1000, "a fault has a line and few words");
    isTaken([&] {
        const std::string written = platform::propertyListXml(listOf(bytes));
        const Bytes again(reinterpret_cast<const uint8_t*>(written.data()), written.size());
        require(platform::propertyListXml(listOf(again)) == written,
                "what is written as a list is read back");
    });
}

/// A scene file: judged, then played for three frames with whatever the judgement was.
void playScene(Bytes bytes) {
    Value content;
    if (!isTaken([&] { content = listOf(bytes); })) return;
    if (sceneBeyondLimits(content, "scene.plist")) return;
    SceneValidation::sceneProblems(content, "scene.plist");
    Playback playback;
    judgeSceneFile((scratchFolder() / "scene.plist").string(), content, playback);
    isTaken([&] { playFrames(content); });
}

void playSceneGroup(Bytes bytes) {
    isTaken([&] {
        NoScenes catalogue;
        const Value content = listOf(bytes);
        SceneGroup group = QVMultiSceneGropPlistFileManager::groupOf(content);
        group.scenes = scenesNamedBy(group.entries, catalogue);
        group.totalFrames();
        group.identifiers();
        SceneValidation::sceneGroupProblems(group, "group.plist");
        Playback playback;
        judgeSceneGroup("group.plist", content, &catalogue, playback);
    });
}

void playTemplateFile(Bytes bytes) {
    isTaken([&] {
        const auto records = templateRecords(listOf(bytes), "fuzz.plist");
        NoScenes others;
        lengthInFrames(records, &others);
        for (const QVTempletDataModel& record : records) {
            photosWanted(record);
            record.mediaFormat();
            const std::string stored = record.dataBaseWechartTempletInfo();
            if (!stored.empty()) platform::parseJson(stored, "stored");
        }
    });
}

void playServerList(Bytes bytes) {
    isTaken([&] {
        const Value list = listOf(bytes);
        for (const Value& offered : list.array("severTempletData")) {
            const auto model = QVSeverTempletDataModel::severTempletDataModelWithDic(offered);
            model.sceneName();
            model.isVersionSupported();
            photosWanted(model.userInputInfo());
        }
    });
}

/// As plain text, and as what is stored: no stranger's bytes are taken for a track.
void playCornerPinTrack(Bytes bytes) {
    const std::vector<uint8_t> plain = copyOf(bytes);
    const auto frames = TrackFile::frames(plain);
    TrackFile::problemOf(frames);
    isTaken([&] {
        const auto stored = TrackFile::encryptedAES256DataUsingDefaultKey(plain, "track.xml");
        require(TrackFile::decryptedAES256DataUsingDefaultKey(stored) == plain,
                "a stored track is read back");
    });
    TrackFile::decryptedAES256DataUsingDefaultKey(plain);
}

}  // namespace multiscene::fuzz
