#include <algorithm>
#include <limits>

#include "3DObject/QuadObject3D/FilterList.h"
#include "animation/TransformItemKeys.h"
#include "app/check/SceneRules.h"
#include "core/QVKeyAnimationOperators.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

bool describesItemsOf(const Key& key, const KeyTable& items) {
    for (const KeyTable* table = key.children; table; table = table->base)
        if (table == &items) return true;
    return false;
}

/// Hands every list of items that a table describes to a judge, item by item with the one before.
class ItemLists : public DictionaryVisitor {
  public:
    struct Item {
        const Value& content;
        const Value* previous;  ///< null for the first
        bool isLast;
        std::string keyPath;
    };
    using Judge = void (*)(const Item&, const std::string& file, Findings&);

    ItemLists(const KeyTable& items, Judge judge, const SceneView& scene, Findings& findings)
        : items_(items), judge_(judge), scene_(scene), findings_(findings) {}

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        if (!describesItemsOf(key, items_)) return;
        const Value::Array& list = value.array();
        for (size_t index = 0; index < list.size(); ++index)
            judge_({list[index], before(list, index), index + 1 == list.size(),
                    keyPath + "[" + std::to_string(index) + "]"},
                   scene_.file, findings_);
    }

  private:
    /// Keys of filters follow those of the same number only.
    static const Value* before(const Value::Array& list, size_t index) {
        const std::string number = FilterList::movedNumber(list[index]);
        while (index-- > 0)
            if (FilterList::movedNumber(list[index]) == number) return &list[index];
        return nullptr;
    }

    const KeyTable& items_;
    Judge judge_;
    const SceneView& scene_;
    Findings& findings_;
};

void judgeItems(const KeyTable& items, ItemLists::Judge judge, const SceneView& scene, Findings& findings) {
    ItemLists visitor(items, judge, scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

std::string frames(int64_t start, int64_t end) {
    return std::to_string(start) + " to " + std::to_string(end);
}

void judgeMotionItem(const ItemLists::Item& item, const std::string& file, Findings& findings) {
    const int64_t start = item.content.integer("sartFps"), end = item.content.integer("endFps");
    if (end < start || (end == start && !item.isLast))
        findings.push_back({Severity::Error, file, item.keyPath,
                            "frames " + frames(start, end) +
                                ": the list stalls here, since an item is left "
                                "on its \"endFps\" after it was started",
                            "let \"endFps\" lie after \"sartFps\""});
    if (!item.previous || start > item.previous->integer("endFps")) return;
    findings.push_back({Severity::Error, file, item.keyPath + ".sartFps",
                        "starts at frame " + std::to_string(start) + ", but the item before ends at " +
                            std::to_string(item.previous->integer("endFps")) + ": it is passed over",
                        "start it at least one frame later"});
}

void judgeKeyFrame(const ItemLists::Item& item, const std::string& file, Findings& findings) {
    const int64_t start = item.content.integer("sartFps"), end = item.content.integer("endFps");
    if (end <= start) {
        findings.push_back({Severity::Error, file, item.keyPath,
                            "frames " + frames(start, end) + ": a key needs at least two frames",
                            "let \"endFps\" lie after \"sartFps\""});
        return;
    }
    if (!item.previous) return;
    const int64_t before = item.previous->integer("endFps");
    if (end <= before)
        findings.push_back({Severity::Error, file, item.keyPath + ".endFps",
                            "ends at frame " + std::to_string(end) + ", but the key before ends at " +
                                std::to_string(before) + ": the list stalls here",
                            "put the keys in order of time"});
    else if (start <= before)
        findings.push_back({Severity::Warning, file, item.keyPath + ".sartFps",
                            "starts at frame " + std::to_string(start) + ", but the key before lasts to " +
                                std::to_string(before) + ": the frames of both belong to the one before",
                            "start it one frame after the other ends"});
}

void judgeOverlappingItem(const ItemLists::Item& item, const std::string& file, Findings& findings) {
    const int64_t start = item.content.integer("fpsStart"), end = item.content.integer("fpsEnd");
    if (end > start) return;
    findings.push_back({Severity::Error, file, item.keyPath,
                        "frames " + frames(start, end) + ": a motion needs at least two frames",
                        "let \"fpsEnd\" lie after \"fpsStart\""});
}

bool turns(const Value& rotation) {
    return rotation.stringValue().find_first_of("123456789") != std::string::npos;
}

void judgeRotation(const ItemLists::Item& item, const std::string& file, Findings& findings) {
    const Value &start = item.content["startRotate"], &end = item.content["endRotate"];
    if (start && !end && turns(start))
        findings.push_back({Severity::Warning, file, item.keyPath + ".startRotate",
                            "without \"endRotate\" it is taken as radians, not as degrees",
                            "add \"endRotate\" with the same value"});
    if (end && !start)
        findings.push_back({Severity::Warning, file, item.keyPath + ".endRotate",
                            "without \"startRotate\" it starts from wherever the node is turned, in radians",
                            "add \"startRotate\""});
}

}  // namespace

void motionListsDoNotStall(const SceneView& scene, Findings& findings) {
    judgeItems(transformItemKeys, judgeMotionItem, scene, findings);
}

void keyFrameListsDoNotStall(const SceneView& scene, Findings& findings) {
    judgeItems(animationKeys, judgeKeyFrame, scene, findings);
}

void overlappingMotionHasLength(const SceneView& scene, Findings& findings) {
    judgeItems(mutableItemKeys, judgeOverlappingItem, scene, findings);
}

void rotationsHaveBothEnds(const SceneView& scene, Findings& findings) {
    judgeItems(transformItemKeys, judgeRotation, scene, findings);
}

void motionBeginsWithItsNode(const SceneView& scene, Findings& findings) {
    for (const NodeView& node : scene.nodes) {
        const Value::Array& items = node.content.array("TransformArray");
        if (items.empty() || !node.frames.start || items[0].integer("sartFps") >= *node.frames.start)
            continue;
        findings.push_back({Severity::Error, scene.file, node.keyPath + ".TransformArray[0].sartFps",
                            "starts at frame " + std::to_string(items[0].integer("sartFps")) + ", but " +
                                node.label() + " only exists from frame " +
                                std::to_string(*node.frames.start) + ": the list never starts",
                            "start it at frame " + std::to_string(*node.frames.start) + " or later"});
    }
}

namespace {

struct MotionList {
    const char *list, *start;
};
constexpr int64_t kNoEnd = std::numeric_limits<int64_t>::max();
constexpr MotionList kMotionLists[] = {{"TransformArray", "sartFps"},
                                       {"MutableTransformArray", "fpsStart"},
                                       {"AnimationInfo", "sartFps"},
                                       {"LetterAnimation", "sartFps"}};

}  // namespace

// An item may follow on the frame after the last one: it states where the motion before it ends.
void motionBeginsBeforeItsNodeEnds(const SceneView& scene, Findings& findings) {
    const int64_t sceneEnd = scene.lastFrame().value_or(kNoEnd);
    for (const NodeView& node : scene.nodes) {
        const int64_t last = std::min(sceneEnd, node.frames.end.value_or(sceneEnd));
        if (last < 0 || last == kNoEnd) continue;
        for (const auto& [list, start] : kMotionLists) {
            const Value::Array& items = node.content.array(list);
            for (size_t index = 0; index < items.size(); ++index)
                if (items[index].integer(start) > framesTo(last))
                    findings.push_back(
                        {Severity::Warning, scene.file,
                         node.keyPath + "." + list + "[" + std::to_string(index) + "]." + start,
                         "starts at frame " + items[index].string(start) + ", but " + node.label() +
                             " is seen to frame " + std::to_string(last) + ": it never happens",
                         "start it earlier or remove it"});
        }
    }
}

}  // namespace multiscene::rules
