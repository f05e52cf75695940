#include "sceneFile/SceneLimits.h"

#include <algorithm>

#include "core/QVObject3DFpsBase.h"
#include "core/QVObjectContainer3D.h"
#include "format/DictionaryWalk.h"
#include "platform/base/Limits.h"
#include "sceneFile/SceneFileKeys.h"
#include "tween/ZBBezierModel.h"

namespace multiscene {

namespace {

using platform::limitOf;
using platform::Value;

/// A number of things, and where it went beyond the limit.
struct Count {
    const char* things;
    uint64_t limit;
    uint64_t number = 0;
    std::string keyPath = {};

    void add(const std::string& at, uint64_t more = 1) {
        if (number <= limit && more > limit - number) keyPath = at;
        number += more;
    }
};

class Counter : public DictionaryVisitor {
  public:
    Count nodes{"nodes", limitOf("maxSceneNodes")}, files{"names of files", limitOf("maxSceneFiles")},
        targets{"bytes to draw into", limitOf("maxSceneTargetBytes")},
        samples{"samples of curves", limitOf("maxSceneCurveSamples")},
        steps{"steps to its curves", limitOf("maxSceneCurveSteps")};

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (keys.has(containerKeys)) nodes.add(keyPath);
        if (keys.has(fpsBaseKeys)) addTarget(content["FpsInfo"], keyPath + ".FpsInfo.textureSize");
        if (keys.find("bezierIdentifier")) addCurve(content, keyPath);
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const bool namesFile = key.lookup == KeyLookup::Path || key.lookup == KeyLookup::UserPath;
        if (namesFile && value.isString() && !value.stringValue().empty()) files.add(keyPath);
    }

  private:
    /// All curves of a scene are worked out when it is loaded: each sample takes the square of the points.
    void addCurve(const Value& curve, const std::string& keyPath) {
        const auto number = uint64_t(ZBBezierModel::samplesFor(curve.integer("interpolationTotal")));
        const uint64_t points =
            std::min(curve.array("controlPoints").size(), ZBBezierModel::maxControlPoints);
        samples.add(keyPath + ".interpolationTotal", number);
        steps.add(keyPath, number * points * points);
    }
    void addTarget(const Value& fpsInfo, const std::string& keyPath) {
        constexpr uint64_t bytesPerPixel = 4;
        const auto size = QVObject3DFpsBase::targetSizeOf(fpsInfo);
        if (size) targets.add(keyPath, bytesPerPixel * uint64_t(size->x) * uint64_t(size->y));
    }
};

}  // namespace

std::optional<platform::Error> sceneBeyondLimits(const Value& scene, const std::string& file) {
    Counter counter;
    walkDictionary(sceneFileKeys, scene, "", counter);
    for (const Count* count :
         {&counter.nodes, &counter.files, &counter.targets, &counter.samples, &counter.steps})
        if (count->number > count->limit)
            return platform::Error(platform::ErrorKind::Template,
                                   platform::beyondLimit(count->number, count->things, count->limit), file,
                                   count->keyPath);
    return std::nullopt;
}

}  // namespace multiscene
