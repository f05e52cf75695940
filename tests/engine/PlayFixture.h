// Plays small scene groups for tests: a catalogue of scenes written on the spot, a driver in software GL, and
// a node that fills a part of the picture with one colour.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <map>

#include "core/GLESUtils/GLObject.h"
#include "core/QVScene3D.h"
#include "group/SceneGroup.h"
#include "platform/base/Clock.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "playback/Playback.h"
#include "sceneFile/SceneFile.h"
#include "tests/engine/MediaFiles.h"
#include "tests/platform/TemporaryFolder.h"
#include "trace/SceneTrace.h"
#include "videoRenderCore/QVMediaManage.h"

namespace multiscene::testing {

using platform::Value;
using Dictionary = Value::Dictionary;

/// Scenes by number; safe from any thread once filled.
class TestCatalogue : public SceneCatalogue {
  public:
    std::optional<SceneConfigData> querySceneWithSid(int64_t sId) override {
        const auto found = scenes.find(sId);
        return found == scenes.end() ? std::nullopt : std::optional(found->second);
    }
    std::map<int64_t, SceneConfigData> scenes;
};

/// A node that fills its "rectangle" ("x,y,width,height" in pixels, from the lower left; none: everything)
/// with its "color"; "flickers" fills the picture with tiles that change all the time.
Value patch(const std::string& color, const std::string& rectangle = {}, Dictionary more = {});

/// A frame clock whose last frame has the number `lastFrame`.
inline Value clock(int64_t lastFrame) {
    return Value(Dictionary{{"type", "QVNullVideoTimeSource"},
                            {"NullVideoInfo", Value(Dictionary{{"videoFps", 30}, {"fpsTotal", lastFrame}})},
                            {"FpsInfo", Value(Dictionary{{"startFps", 0}, {"endFps", lastFrame}})}});
}

inline Value transition(int64_t sceneId, int64_t frames, int64_t type) {
    return Value(
        Dictionary{{"tansitionsSceneId", sceneId}, {"fpsTotal", frames}, {"sceneTansitionsType", type}});
}

/// A texture quad over the whole of a picture of `width` times `height`, or a part of it around `anchorY`.
inline Dictionary texturedQuad(const std::string& type, Dictionary textureInfo, double width, double height,
                               double anchorY = 0) {
    return {{"type", Value(type)},
            {"TextureInfo", Value(std::move(textureInfo))},
            {"QuadInfo",
             Value(Dictionary{{"modelWidth", width}, {"modelHeight", height}, {"anchorY", anchorY}})}};
}

/// A scene with one unit a pixel.
inline Value flatScene(double width, double height, const Value& timeSource, Value::Array nodes) {
    return Value(Dictionary{
        {"Camera",
         Value(Dictionary{{"type", "QVOrthCamera"}, {"OrthWidth", width}, {"aspect", width / height}})},
        {"TimeSource", timeSource},
        {"object3D", Value(std::move(nodes))}});
}

/// A transition scene that fades from the current scene into the next until its last frame.
inline Value crossFade(double width, double height, int64_t lastFrame) {
    Dictionary next =
        texturedQuad("QVQuadDiaphaneityObject3D", {{"textureType", "nextSceneRenderTexture"}}, width, height);
    next["AnimationInfo"] = Value(Value::Array{Value(Dictionary{{"sartFps", 0},
                                                                {"endFps", lastFrame},
                                                                {"ease", 0},
                                                                {"startRenderAlpha", 0},
                                                                {"endRenderAlpha", 1}})});
    return flatScene(
        width, height, clock(lastFrame),
        {Value(texturedQuad("QVQuadObject3D", {{"textureType", "currentSceneRenderTexture"}}, width, height)),
         Value(std::move(next))});
}

/// What GL itself holds in the current context, by kind; kinds without any are left out.
std::map<std::string, int> glCensus();

class PlayFixture : public ::testing::Test {
  protected:
    PlayFixture() { playback_->gate().allowFolder(folder_); }
    ~PlayFixture() override {
        player_.reset();
        driver_.reset();
    }

    /// Writes a scene file and gives it a number in the catalogue, which may know its number of frames.
    void addScene(int64_t sceneId, const Value& scene, int64_t fpsLength = 0) {
        const auto path = folder_ / ("scene" + std::to_string(sceneId) + ".plist");
        platform::writePropertyList(path, scene);
        SceneConfigData record;
        record.sId = sceneId;
        record.scenePlistPath = path;
        record.fpsLength = fpsLength;
        record.sceneResourceFolderPath = folder_.string() + "/";
        catalogue_->scenes[sceneId] = record;
    }
    void addScene(int64_t sceneId, int64_t lastFrame, Value::Array nodes = {}) {
        addScene(sceneId, Value(Dictionary{{"TimeSource", clock(lastFrame)}, {"object3D", Value(nodes)}}),
                 lastFrame + 1);
    }
    /// Appends to the group.
    void play(int64_t sceneId, const Value& transitionAtEnd = {}) {
        Dictionary entry{{"mainSceneId", sceneId}};
        if (transitionAtEnd) entry["sceneTansitionsInfo"] = transitionAtEnd;
        scenes_.emplace_back(entry);
    }

    /// Driver and player; every end is counted.
    void create(std::shared_ptr<FrameSink> frameSink, std::shared_ptr<SoundSink> soundSink = {},
                bool isLooping = false) {
        driver_ = QVMultiSceneRenderManager::initWithFrameSink(
            playback_, std::move(frameSink), std::move(soundSink),
            {.bufferWidth = 32, .bufferHeight = 32, .renderer = renderer_, .makeContext = [] {
                 return platform::GLContext::create(platform::GLContext::Driver::Software);
             }});
        driver_->setExportPauseSeconds(0);
        driver_->setFrameRenderingCompleteBlock([this](int64_t count) { frames_ = count; });
        player_ = QVMediaManage::initWithRenderManager(driver_, isLooping);
        player_->setIsRec(true);
        player_->setOnSceneGroupRenderingCompleteBlock([this] { ++completions_; });
        player_->setOnSceneGroupRenderingFailedBlock([this](const platform::Error& error) {
            error_ = error;
            ++failures_;
        });
    }
    /// The scenes as they are now, read from their files.
    SceneGroup group(const Value::Array& scenes, const Value& userMediaMap = {}) const {
        SceneGroup group{scenes, userMediaMap, scenesNamedBy(scenes, *catalogue_)};
        readScenes(group, {}, playback_->gate());
        return group;
    }
    SceneGroup group() const { return group(scenes_); }
    void start() { player_->loadSceneGroup(group()); }

    /// Pumps the main queue until `isDone` holds; fails after a minute.
    static void pumpUntil(const std::function<bool()>& isDone) {
        const double deadline = platform::monotonicSeconds() + 60;
        platform::DispatchQueue::main().pumpUntil(
            [&] { return isDone() || platform::monotonicSeconds() > deadline; },
            std::chrono::milliseconds(2));
        EXPECT_TRUE(isDone());
    }
    /// Lets everything that is on its way arrive.
    static void settle() {
        int turns = 0;
        platform::DispatchQueue::main().pumpUntil([&] { return ++turns > 20; }, std::chrono::milliseconds(2));
    }
    void run() {
        start();
        pumpUntil([&] { return completions_ + failures_ > 0; });
        // What else is queued must not end the group a second time.
        driver_->performOnRenderQueue([] {});
    }

    /// "mode:slot+slot" of each frame, such as "1:c1+n2+t9".
    void recordFrame() {
        const Value line = SceneTrace::frame(*driver_);
        std::string text = line.string("mode") + ":";
        for (const Value& scene : line.array("scenes"))
            text +=
                (text.back() == ':' ? "" : "+") + scene.string("slot").substr(0, 1) + scene.string("sceneId");
        played_.push_back(text);
    }
    void recordFrames() {
        driver_->setFrameSampleBlock([this](int64_t) { recordFrame(); });
    }
    /// Runs of equal frames: "0:c1 x4, 1:c1+n2+t9 x2".
    static std::string summaryOf(const std::vector<std::string>& frames) {
        std::string text;
        for (size_t i = 0; i < frames.size();) {
            size_t end = i;
            while (end < frames.size() && frames[end] == frames[i]) ++end;
            text += (text.empty() ? "" : ", ") + frames[i] + " x" + std::to_string(end - i);
            i = end;
        }
        return text;
    }
    std::string summary() const { return summaryOf(played_); }

    static int liveObjects() {
        return liveGLObjects(GLObjectKind::Texture) + liveGLObjects(GLObjectKind::Framebuffer) +
               liveGLObjects(GLObjectKind::Renderbuffer);
    }

    const platform::test::TemporaryFolder temporary_;
    const std::filesystem::path folder_ = temporary_.path();
    Renderer renderer_ = Renderer::Software;  ///< GL for tests that count its objects
    std::shared_ptr<Playback> playback_ = std::make_shared<Playback>();
    std::shared_ptr<TestCatalogue> catalogue_ = std::make_shared<TestCatalogue>();
    Value::Array scenes_;
    std::shared_ptr<QVMultiSceneRenderManager> driver_;
    std::shared_ptr<QVMediaManage> player_;
    std::atomic<int> completions_{0}, failures_{0};
    std::atomic<int64_t> frames_{0};
    std::optional<platform::Error> error_;
    std::vector<std::string> played_;
};

}  // namespace multiscene::testing
