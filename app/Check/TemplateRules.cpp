#include "app/Check/TemplateRules.h"

#include <array>

#include "app/Check/LookedUpKeys.h"
#include "app/Check/OwnIdentifier.h"
#include "app/Check/UsedFiles.h"
#include "app/Model/MediaFormat.h"

namespace multiscene {

using platform::Value;

std::span<const TemplateRule> templateRules() {
    static constexpr std::array table{
        rules::lengthsAreTheClocks, rules::numbersAreUnique, rules::pictureSizeIsEven, rules::musicIsThere,
        rules::inputKeysAreUnique,  rules::inputKeysAreFree, rules::inputsAreUsed,
    };
    return table;
}

namespace rules {

namespace {

constexpr int64_t kLengthFromUserVideo = 7;

std::string recordPath(size_t index, const std::string& key) {
    return "installScenes[" + std::to_string(index) + "]." + key;
}

std::string inputPath(size_t index) {
    return recordPath(0, "wechartTempletInfo.userInputArray[") + std::to_string(index) + "].renderMapKey";
}

}  // namespace

void lengthsAreTheClocks(const TemplateView& view, Findings& findings) {
    for (size_t index = 0; index < view.records().size(); ++index) {
        const Value& record = view.records()[index];
        const SceneView* scene = view.group.scene(record.integer("sId"));
        const auto last = scene ? scene->lastFrame() : std::nullopt;
        const int64_t length = record.integer("fpsLength");
        if (!last || length == *last + 1) continue;
        if (length < 1 && record.integer("sourceType") == kLengthFromUserVideo) continue;
        findings.push_back(
            {Severity::Error, view.file, recordPath(index, "fpsLength"),
             "is " + std::to_string(length) + ", but the clock's last frame is " + std::to_string(*last),
             "set it to " + std::to_string(*last + 1)});
    }
}

void numbersAreUnique(const TemplateView& view, Findings& findings) {
    std::set<int64_t> numbers;
    for (size_t index = 0; index < view.records().size(); ++index)
        if (!numbers.insert(view.records()[index].integer("sId")).second)
            findings.push_back({Severity::Error, view.file, recordPath(index, "sId"),
                                "an earlier record has this number too", "give each scene its own"});
}

void pictureSizeIsEven(const TemplateView& view, Findings& findings) {
    const std::string text = view.inputs().string("mediaSize");
    const auto size = parseMediaSize(text);
    if (!size || (size->width % 2 == 0 && size->height % 2 == 0)) return;
    findings.push_back({Severity::Error, view.file, recordPath(0, "wechartTempletInfo.mediaSize"),
                        "\"" + text + "\" is odd, which video cannot be", "use even numbers"});
}

void musicIsThere(const TemplateView& view, Findings& findings) {
    const std::string music = view.inputs().string("bgAudioPath");
    if (music.empty()) return;
    const std::string folder = view.file.substr(0, view.file.rfind('/') + 1);
    const Finding place{Severity::Error, view.file, recordPath(0, "wechartTempletInfo.bgAudioPath"), {}, {}};
    if (auto finding = judgeFileName(music, folder, place)) findings.push_back(*finding);
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
        if (key.find(kOwnIdentifierMark) == std::string::npos && key.find('=') == std::string::npos) continue;
        findings.push_back({Severity::Error, view.file, inputPath(index),
                            "\"" + key + "\" holds a character that the program keeps for itself",
                            "use neither # nor ="});
    }
}

void inputsAreUsed(const TemplateView& view, Findings& findings) {
    LookedUpKeys used;
    for (const auto& [number, scene] : view.group.scenes) used.merge(lookedUpKeys(scene.content));
    const std::set<std::string> identifiers = view.group.identifiers();
    const Value::Array& inputs = view.inputs().array("userInputArray");
    for (size_t index = 0; index < inputs.size(); ++index) {
        const std::string key = inputs[index].string("renderMapKey");
        if (key.empty() || isLookedUp(key, used, identifiers)) continue;
        findings.push_back({Severity::Warning, view.file, inputPath(index),
                            "no scene looks \"" + key + "\" up: what the user gives is not shown",
                            "name it in a scene or remove the input"});
    }
}

}  // namespace rules
}  // namespace multiscene
