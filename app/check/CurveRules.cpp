#include <algorithm>
#include <map>

#include "animation/TransformItemKeys.h"
#include "app/check/KeyJudge.h"
#include "app/check/SceneRules.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"
#include "tween/Ease.h"
#include "tween/MotionPath.h"

namespace multiscene::rules {

using platform::Value;

namespace {

bool hasAxis(int64_t code, int64_t axis) { return code % 10 == axis || code / 10 == axis; }

bool isAxis(int64_t digit) { return digit >= 1 && digit <= 3; }

/// The curves of a node by identifier, each with its axes.
using Curves = std::map<std::string, int64_t>;

Curves curvesOf(const Value& node) {
    Curves curves;
    for (const Value& entry : node.array("BezierArray"))
        curves[entry.string("bezierIdentifier")] = entry.integer("interpolationXYZ");
    return curves;
}

/// Hands every dictionary of a scene to a judge together with the curves of the node that it belongs to.
class NodeOwnedWalk : public DictionaryVisitor {
  public:
    NodeOwnedWalk(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (keys.find("BezierArray")) owners_[keyPath + "."] = curvesOf(content);
        for (const KeyTable* items : {&transformItemKeys, &mutableTranslateKeys})
            if (keys.has(*items)) judgePaths(*items, content, keyPath);
        if (keys.has(transformItemKeys)) judgeTexture(content, keyPath);
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const auto ease = static_cast<int32_t>(value.integerValue());
        if (!isEase(key.name)) return;
        if (!isBezierEase(ease)) return judgeEase(ease, keyPath);
        const std::string identifier = std::to_string(ease);
        if (!curvesAt(keyPath).contains(identifier)) addUnknown(identifier, keyPath);
    }

  private:
    static bool isEase(std::string_view key) {
        return key == "ease" || key.ends_with("Ease") || key == "iTranslate" || key == "iScale" ||
               key == "iRotate";
    }

    /// A light has no curves, whatever the node that holds it has.
    const Curves& curvesAt(const std::string& keyPath) const {
        static const Curves none;
        const Curves* nearest = &none;
        size_t longest = 0;
        for (const auto& [owner, curves] : owners_)
            if (keyPath.starts_with(owner) && owner.size() > longest) {
                nearest = &curves;
                longest = owner.size();
            }
        return keyPath.find("LightSourceArray[", longest) == std::string::npos ? *nearest : none;
    }

    void judgeEase(int32_t ease, const std::string& keyPath) {
        if (ease >= 0 && ease < static_cast<int32_t>(easeTable().size())) return;
        add(keyPath, "there is no ease " + std::to_string(ease) + ": it goes evenly",
            "eases are 0 to " + std::to_string(easeTable().size() - 1));
    }

    /// The tween of a texture has no node, so it finds no curve.
    void judgeTexture(const Value& item, const std::string& keyPath) {
        const auto ease = static_cast<int32_t>(item.integer("rotateEase"));
        if (!item.has("endTextureOrigin") || !isBezierEase(ease)) return;
        findings_.push_back({Severity::Warning, scene_.file, keyPath + ".rotateEase",
                             "a texture follows no curve: it moves evenly", "choose an ease below 30000"});
    }

    void judgePaths(const KeyTable& table, const Value& item, const std::string& keyPath) {
        const glm::vec3 end = KeyReader(table, item).vector3("endTranslate");
        const bool overlaps = &table == &mutableTranslateKeys;
        for (int axis = 0; axis < 3; ++axis) {
            if (!namesMotionPath(end[axis])) continue;
            // An item of "MutableTransformArray" looks its z path up under the number of y.
            const float number = overlaps && axis == 2 ? end.y : end[axis];
            judgePath(motionPathName(number), axis, keyPath + ".endTranslate");
        }
    }

    void judgePath(const std::string& identifier, int axis, const std::string& keyPath) {
        const Curves& curves = curvesAt(keyPath);
        const auto curve = curves.find(identifier);
        if (curve == curves.end()) return addUnknown(identifier, keyPath);
        if (!hasAxis(curve->second, axis + 1))
            add(keyPath, "the path \"" + identifier + "\" has no " + "xyz"[axis],
                "see \"interpolationXYZ\" of the path");
    }

    void addUnknown(const std::string& identifier, const std::string& keyPath) {
        add(keyPath, "no \"BezierArray\" of this node has \"" + identifier + "\"",
            "add it there; positions lie below 30000, and eases without a curve are 0 to " +
                std::to_string(easeTable().size() - 1));
    }

    void add(const std::string& keyPath, std::string message, std::string remedy) {
        findings_.push_back({Severity::Error, scene_.file, keyPath, std::move(message), std::move(remedy)});
    }

    const SceneView& scene_;
    Findings& findings_;
    std::map<std::string, Curves> owners_;  ///< by the start of their keys' paths
};

class CurveEntries : public DictionaryVisitor {
  public:
    CurveEntries(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (!keys.find("bezierIdentifier")) return;
        judgeIdentifier(content.string("bezierIdentifier"), keyPath);
        const int64_t axes = content.integer("interpolationXYZ");
        if (!isAxis(axes % 10) || !isAxis(axes / 10) || axes % 10 == axes / 10)
            add(keyPath + ".interpolationXYZ", "is " + std::to_string(axes) + ", not two different axes",
                "write such as 21 (x and y), 31 (x and z), 32 (y and z)");
        judgePoints(content.array("controlPoints"), keyPath + ".controlPoints");
    }

  private:
    void judgeIdentifier(const std::string& identifier, const std::string& keyPath) {
        const auto number = frameNumberOf(Value(identifier));
        if (!number || *number < firstBezierEase || std::to_string(*number) != identifier)
            add(keyPath + ".bezierIdentifier", "\"" + identifier + "\" is a name that nothing can refer to",
                "use a whole number of 30000 or more");
        const size_t end = keyPath.rfind('[');
        if (!identifiers_.insert({keyPath.substr(0, end), identifier}).second)
            add(keyPath + ".bezierIdentifier",
                "an earlier curve is \"" + identifier + "\" too, and this one replaces it",
                "give each its own number");
    }

    void judgePoints(const Value::Array& points, const std::string& keyPath) {
        for (size_t index = 0; index < points.size(); ++index) {
            const std::string text = points[index].stringValue();
            const size_t comma = text.find(',');
            const bool isPoint = comma != std::string::npos && isNumberText(text.substr(0, comma)) &&
                                 isNumberText(text.substr(comma + 1));
            if (!isPoint)
                add(keyPath + "[" + std::to_string(index) + "]", "\"" + text + "\" is no point",
                    "write two numbers \"a,b\"");
        }
    }

    void add(const std::string& keyPath, std::string message, std::string remedy) {
        findings_.push_back({Severity::Error, scene_.file, keyPath, std::move(message), std::move(remedy)});
    }

    const SceneView& scene_;
    Findings& findings_;
    std::set<std::pair<std::string, std::string>> identifiers_;  ///< list and name
};

}  // namespace

void curvesCanBeUsed(const SceneView& scene, Findings& findings) {
    CurveEntries visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

void easesAndPathsAreThere(const SceneView& scene, Findings& findings) {
    NodeOwnedWalk visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
