// A render driver of scenes alone, for tests of scenes and nodes.
#pragma once

#include <vector>

#include "core/QVObject3DTransformBase.h"
#include "core/QVScene3D.h"
#include "core/carmera/QVCamera3D.h"
#include "platform/base/Json.h"
#include "playback/Playback.h"
#include "playback/RenderDriver.h"

namespace multiscene {

class FakeDriver : public RenderDriver {
  public:
    int32_t bufferWidth() const override { return width; }
    int32_t bufferHeight() const override { return height; }
    int32_t sceneTextureMaxWidth() const override { return 1000; }
    SceneRenderType sceneRenderType() const override { return type; }
    std::shared_ptr<QVScene3D> currentScene() const override { return current; }
    std::shared_ptr<QVScene3D> nextScene() const override { return next; }
    std::shared_ptr<QVScene3D> transitionsScene() const override { return transition; }
    int64_t currentRenderFps() const override { return renderFps; }
    Playback& playback() override { return played; }
    void startSoundEffect(const platform::Value& audioInfo) override { sounds.push_back(audioInfo); }
    void stopSoundEffect(const std::string&) override {}
    Painter& painter() override { return *shownBy; }

    int32_t width = 720, height = 1280;
    SceneRenderType type = SceneRenderType::Single;
    std::shared_ptr<QVScene3D> current, next, transition;
    int64_t renderFps = 0;
    Painter* shownBy = nullptr;
    std::vector<platform::Value> sounds;
    Playback played;
};

inline platform::CMTime frame(int64_t number) { return platform::CMTimeMake(number, 30); }

/// "a=b" pairs as a dictionary.
inline platform::Value dictionary(platform::Value::Dictionary entries) {
    return platform::Value(std::move(entries));
}
inline platform::Value array(platform::Value::Array items) { return platform::Value(std::move(items)); }
inline platform::Value fromJson(const char* text) { return platform::parseJson(text, "a test"); }

inline std::shared_ptr<QVObject3DTransformBase> group(const platform::Value& info = dictionary({})) {
    auto node = std::make_shared<QVObject3DTransformBase>();
    node->rendInfoWithDic(info);
    return node;
}

}  // namespace multiscene
