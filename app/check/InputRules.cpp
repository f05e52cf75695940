#include <optional>

#include "app/check/LookedUpKeys.h"
#include "app/check/OwnIdentifier.h"
#include "app/check/TemplateRules.h"

namespace multiscene::rules {

using platform::Value;

namespace {

std::string inputPath(size_t index, const std::string& key = "renderMapKey") {
    return "installScenes[0].wechartTempletInfo.userInputArray[" + std::to_string(index) + "]." + key;
}

struct Kind {
    int64_t type;
    const char* name;
};
constexpr Kind kText{0, "a text"}, kPhoto{1, "a photo"}, kVideo{3, "a video"};

const Kind* kindOf(const Value& input) {
    for (const Kind* kind : {&kText, &kPhoto, &kVideo})
        if (input.integer("userInputType") == kind->type) return kind;
    return nullptr;
}

bool fits(const Kind& kind, LookUpKind lookUp) {
    switch (lookUp) {
        case LookUpKind::Text:
            return kind.type == kText.type;
        case LookUpKind::File:
            return kind.type == kPhoto.type;
        case LookUpKind::Video:
            return kind.type == kVideo.type;
    }
    return false;
}

/// A photo's path is no text to show, a text is no picture's path, and a photo is no video.
void judgeKind(const Value& input, LookUpKind lookUp, Finding place, Findings& findings) {
    static constexpr const char* shownAs[] = {"text", "a picture", "a video"};
    const Kind* kind = kindOf(input);
    if (!kind || fits(*kind, lookUp)) return;
    place.message = "\"" + input.string("renderMapKey") + "\" is " + kind->name +
                    ", but a scene shows it as " + shownAs[static_cast<int>(lookUp)];
    place.remedy = "correct \"userInputType\" or the scene";
    findings.push_back(std::move(place));
}

}  // namespace

void inputTypesAreKnown(const TemplateView& view, Findings& findings) {
    const Value::Array& inputs = view.inputs().array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index)
        if (inputs[index].integer("userInputType") == 2)  // within the range of the key, and no type
            findings.push_back({Severity::Error, view.file, inputPath(index, "userInputType"),
                                "2 is no type: nobody is asked for this", "0 a text, 1 a photo, 3 a video"});
}

void inputKeysAreUnique(const TemplateView& view, Findings& findings) {
    std::set<std::string> keys;
    const Value::Array& inputs = view.inputs().array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index)
        if (!keys.insert(inputs[index].string("renderMapKey")).second)
            findings.push_back(
                {Severity::Error, view.file, inputPath(index),
                 "an earlier input has the key \"" + inputs[index].string("renderMapKey") + "\" too",
                 "give each input its own"});
}

void inputKeysAreFree(const TemplateView& view, Findings& findings) {
    const Value::Array& inputs = view.inputs().array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index) {
        const std::string key = inputs[index].string("renderMapKey");
        if (key.empty() && inputs[index].has("renderMapKey"))
            findings.push_back({Severity::Error, view.file, inputPath(index), "is empty", "name the input"});
        if (key.find(kOwnIdentifierMark) == std::string::npos && key.find('=') == std::string::npos) continue;
        findings.push_back({Severity::Error, view.file, inputPath(index),
                            "\"" + key + "\" holds a character that the program keeps for itself",
                            "use neither # nor ="});
    }
}

void photoShapesAreWhole(const TemplateView& view, Findings& findings) {
    const Value::Array& inputs = view.inputs().array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index) {
        const bool hasWidth = inputs[index].integer("aspectWidth") > 0;
        if (hasWidth == (inputs[index].integer("aspectHeight") > 0)) continue;
        findings.push_back({Severity::Warning, view.file,
                            inputPath(index, hasWidth ? "aspectWidth" : "aspectHeight"),
                            "one side alone is no shape: nothing is cropped", "give both sides"});
    }
}

void inputsAreUsed(const TemplateView& view, Findings& findings) {
    if (!view.group.unreadable.empty()) return;  // nobody knows what those scenes look up
    LookedUpKeys used;
    for (const auto& [number, scene] : view.group.scenes) used.merge(lookedUpKeys(scene.content));
    const Value::Array& inputs = view.inputs().array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index) {
        const std::string key = inputs[index].string("renderMapKey");
        const auto lookUp = key.empty() ? std::nullopt : lookUpOf(key, used, view.group.identifiers());
        if (!key.empty() && !lookUp)
            findings.push_back({Severity::Warning, view.file, inputPath(index),
                                "no scene looks \"" + key + "\" up: what the user gives is not shown",
                                "name it in a scene or remove the input"});
        if (lookUp)
            judgeKind(inputs[index], *lookUp, {Severity::Error, view.file, inputPath(index), {}, {}},
                      findings);
    }
}

}  // namespace multiscene::rules
