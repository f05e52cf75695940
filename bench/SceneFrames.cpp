// What a frame of a scene costs besides its drawing: key frames, tweens and matrices, in CPU time of one
// thread. Each node's projection is asked for twice a frame, as by a quad that is drawn and recorded. Nothing
// is decoded or drawn.
#include <benchmark/benchmark.h>

#include <stdexcept>
#include <string>

#include "core/QVScene3D.h"
#include "core/SceneNodes.h"
#include "playback/Playback.h"
#include "playback/RenderDriver.h"

namespace {

using namespace multiscene;
using platform::Value;

class NoDriver : public RenderDriver {
  public:
    int32_t bufferWidth() const override { return 720; }
    int32_t bufferHeight() const override { return 1280; }
    int32_t sceneTextureMaxWidth() const override { return 1000; }
    SceneRenderType sceneRenderType() const override { return SceneRenderType::Single; }
    std::shared_ptr<QVScene3D> currentScene() const override { return nullptr; }
    std::shared_ptr<QVScene3D> nextScene() const override { return nullptr; }
    std::shared_ptr<QVScene3D> transitionsScene() const override { return nullptr; }
    Playback& playback() override { return played_; }
    Painter& painter() override { throw std::logic_error("nothing is drawn here"); }
    int64_t currentRenderFps() const override { return 0; }
    void startSoundEffect(const Value&) override {}
    void stopSoundEffect(const std::string&) override {}

  private:
    Playback played_;
};

constexpr int kFrames = 300;

Value dictionary(Value::Dictionary keys) { return Value(std::move(keys)); }
Value list(Value::Array items) { return Value(std::move(items)); }

Value item(int type, const char* from, const char* to) {
    const std::string what = type == 0 ? "Translate" : type == 1 ? "Scale" : "Rotate";
    return dictionary({{"transformType", Value(type)},
                       {"fpsStart", Value(0)},
                       {"fpsEnd", Value(kFrames)},
                       {"start" + what, Value(from)},
                       {"end" + what, Value(to)},
                       {"i" + what, Value(6)}});
}

Value still(int number) {
    return dictionary(
        {{"type", Value("QVQuadObject3D")},
         {"TransformArray",
          list({dictionary({{"sartFps", Value(0)},
                            {"endFps", Value(kFrames + 1)},
                            {"startTranslate", Value(std::to_string(number % 700) + ",20,0")}})})}});
}

Value keyed() {
    return dictionary(
        {{"type", Value("QVQuadDiaphaneityObject3D")},
         {"AnimationInfo", list({dictionary({{"sartFps", Value(0)},
                                             {"endFps", Value(kFrames)},
                                             {"ease", Value(3)},
                                             {"startRenderAlpha", Value(0.25)},
                                             {"endRenderAlpha", Value(1.0)}})})},
         {"MutableTransformArray",
          list({item(0, "0,0,0", "100,50,0"), item(1, "1,1,1", "2,2,2"), item(2, "0,0,0", "0,0,360")})}});
}

void playFrames(benchmark::State& state, int stillNodes, int keyedNodes) {
    NoDriver driver;
    for (auto run : state) {
        state.PauseTiming();
        const auto scene = QVScene3D::initRenderManager(driver);
        for (int number = 0; number < stillNodes; ++number)
            scene->addChild(SceneNodes::object3DWithInfo(still(number), scene));
        for (int number = 0; number < keyedNodes; ++number)
            scene->addChild(SceneNodes::object3DWithInfo(keyed(), scene));
        state.ResumeTiming();
        for (int frame = 0; frame < kFrames; ++frame) {
            scene->setCurrentRenderTime(platform::CMTimeMake(frame, 30));
            scene->updateData();
            scene->tweens().update();
            scene->updateMatrix();
            for (const auto& node : scene->children())
                for (int reading = 0; reading < 2; ++reading) benchmark::DoNotOptimize(node->projTransform());
            scene->renderComplete();
        }
    }
    state.counters["a frame"] = benchmark::Counter(
        kFrames, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void twoThousandStillAndOneMoves(benchmark::State& state) { playFrames(state, 2000, 1); }
void fiveHundredMove(benchmark::State& state) { playFrames(state, 0, 500); }
BENCHMARK(twoThousandStillAndOneMoves)->Unit(benchmark::kMillisecond);
BENCHMARK(fiveHundredMove)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
