#include "app/Check/KeyExample.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "core/NodeTypes.h"
#include "core/VideoTimeSource.h"

namespace multiscene {

namespace {

constexpr size_t kShownKeys = 5;
constexpr int kDeepest = 1;

/// What a plausible dictionary says, where neither default nor type tells: by key, or by table and key where
/// a name means different things. Lists are separated by ";".
const std::map<std::string, const char*, std::less<>>& samples() {
    static const std::map<std::string, const char*, std::less<>> table{
        {"Attributes", "position;inputTextureCoordinate"},
        {"BlendInfo.decBlend", "1"},
        {"BlendInfo.srcBlend", "770"},
        {"ChromaKeyColor", "0,0.8,0.2,1"},
        {"ColorInfo.a", "1"},
        {"ColorInfo.r", "1"},
        {"Files", "own.vsh;own.fsh"},
        {"FrustumFov", "60"},
        {"NullVideoInfo.fpsTotal", "89"},
        {"OrthWidth", "720"},
        {"Uniforms", "u_mvpMatrix;u_textureMatrix;videoFrame;aplae"},
        {"animationEnd", "12"},
        {"animationExtension", "png"},
        {"animationFps", "2"},
        {"animationName", "$(currentScenePlistROOT)/res/flame"},
        {"animationStart", "1"},
        {"aspect", "0.5625"},
        {"aspectHeight", "1"},
        {"aspectWidth", "1"},
        {"audioFilePath", "$(currentScenePlistROOT)/res/pop.mp3"},
        {"audioKey", "pop"},
        {"audioVolume", "1"},
        {"bezierIdentifier", "30001"},
        {"cName", "生日"},
        {"controlPoints", "-200,0;0,300;200,0"},
        {"eName", "Birthday"},
        {"endFps", "89"},
        {"endMaskAlpha", "1"},
        {"endOneVariable", "1"},
        {"endRenderAlpha", "1"},
        {"endTranslate", "0,120,0"},
        {"fpsEnd", "30"},
        {"fpsLength", "90"},
        {"fpsTotal", "20"},
        {"interpolationTotal", "100"},
        {"interpolationXYZ", "21"},
        {"lightSourceType", "1"},
        {"mainSceneId", "1000"},
        {"maskTextureName", "$(currentScenePlistROOT)/res/mask.png"},
        {"maskVideoPath", "$(currentScenePlistROOT)/res/mask.mp4"},
        {"maxEclosion", "0.5"},
        {"maxLenght", "24"},
        {"maxLine", "1"},
        {"modelDepth", "560"},
        {"modelHeight", "560"},
        {"modelWidth", "560"},
        {"moveTargetPointEase", "15"},
        {"msaterVideoPath", "$(currentScenePlistROOT)/res/morning.mp4"},
        {"name", "photo"},
        {"renderMapKey", "title"},
        {"sId", "1000"},
        {"sceneIdentifier", "a"},
        {"scenePlistPath", "$(multiSceneSceneROOT)/birthday/scene.plist"},
        {"sceneResourceFolderPath", "$(multiSceneSceneROOT)/birthday/"},
        {"sceneThumbnailPath", "$(multiSceneSceneROOT)/birthday/thumbnail.jpg"},
        {"sceneGroupFpsTotal", "90"},
        {"startTranslate", "0,40,0"},
        {"tansitionsSceneId", "1001"},
        {"textString", "title"},
        {"texture", "$(currentScenePlistROOT)/res/photo.jpg"},
        {"textureMapKey", "card"},
        {"textureType", "image"},
        {"trackFliePath", "$(currentScenePlistROOT)/res/sign.track"},
        {"translateEase", "5"},
        {"type", "QVQuadObject3D"},
        {"QVObject3DComponentBase.type", "QVObject3DSoundSourceComponent"},
        {"videoFps", "30"},
    };
    return table;
}

/// The sample of a key, or none.
const char* sampleOf(const KeyTable& owner, const Key& key) {
    for (const std::string& name :
         {std::string(owner.owner) + "." + std::string(key.name), std::string(key.name)})
        if (const auto found = samples().find(name); found != samples().end()) return found->second;
    return nullptr;
}

std::string indented(int depth) { return std::string(2 * depth, ' '); }

std::string element(const char* tag, const std::string& text) {
    return std::string("<") + tag + ">" + text + "</" + tag + ">\n";
}

struct ShownKey {
    const KeyTable* owner;
    const Key* key;
};

std::string textOf(const ShownKey& shown) {
    const Key& key = *shown.key;
    if (!key.choices.empty() && key.type == KeyType::Choice) return std::string(key.choices.front());
    if (const char* sample = sampleOf(*shown.owner, key)) return sample;
    if (key.type == KeyType::Choice) return std::string(shown.owner->variants->names().front());
    if (!key.fallback.empty()) return std::string(key.fallback);
    switch (key.type) {
        case KeyType::Integer:
        case KeyType::Number:
            return std::to_string(
                static_cast<int64_t>(std::isfinite(key.minimum) ? std::ceil(key.minimum) : 1));
        case KeyType::Vector2:
            return "256,256";
        case KeyType::Vector3:
            return "1,1,1";
        case KeyType::Color:
            return "1,1,1,1";
        default:
            return std::string(key.name);
    }
}

std::vector<ShownKey> shownKeys(const KeyTable& table) {
    std::vector<ShownKey> shown;
    const auto isShown = [&](const Key& key) {
        return std::any_of(shown.begin(), shown.end(),
                           [&](const ShownKey& each) { return each.key->name == key.name; });
    };
    const auto take = [&](bool required) {
        for (const KeyTable* part = &table; part; part = part->base)
            for (const Key& key : part->keys) {
                const bool fits = required || (part == &table && shown.size() < kShownKeys);
                if (key.required == required && fits && !isShown(key)) shown.push_back({part, &key});
            }
    };
    take(true);
    take(false);
    return shown;
}

/// The type that a table belongs to, where it is one of its own.
template <typename Types>
std::string typeWith(const KeyTable& table) {
    for (const auto& [name, entry] : Types::all())
        if (entry.keys == &table) return name;
    return {};
}

std::string dictionary(const KeyTable& table, int depth, int nesting);

std::string nested(const Key& key, int depth, int nesting) {
    if (key.children && !key.children->keys.empty() && nesting < kDeepest)
        return dictionary(*key.children, depth, nesting + 1);
    return indented(depth) + "<dict><!-- … --></dict>\n";
}

std::string list(const ShownKey& shown, int depth) {
    std::string text = textOf(shown), lines = indented(depth) + "<array>\n";
    for (size_t end; !text.empty(); text.erase(0, end == std::string::npos ? end : end + 1)) {
        end = text.find(';');
        lines += indented(depth + 1) + element("string", text.substr(0, end));
    }
    return lines + indented(depth) + "</array>\n";
}

std::string valueOf(const ShownKey& shown, int depth, int nesting) {
    const Key& key = *shown.key;
    const std::string margin = indented(depth);
    switch (key.type) {
        case KeyType::Bool:
            return margin + (platform::Value(key.fallback).boolValue() ? "<false/>\n" : "<true/>\n");
        case KeyType::Integer:
            return margin + element("integer", textOf(shown));
        case KeyType::Number:
            return margin + element("real", textOf(shown));
        case KeyType::Dictionary:
            return nested(key, depth, nesting);
        case KeyType::Array:
            return margin + "<array>\n" + nested(key, depth + 1, nesting) + margin + "</array>\n";
        case KeyType::TextArray:
            return list(shown, depth);
        default:
            return margin + element("string", textOf(shown));
    }
}

std::string dictionary(const KeyTable& table, int depth, int nesting) {
    std::string type = typeWith<NodeTypes>(table);
    if (type.empty()) type = typeWith<TimeSourceTypes>(table);
    std::string text = indented(depth) + "<dict>\n";
    for (const ShownKey& shown : shownKeys(table)) {
        text += indented(depth + 1) + element("key", std::string(shown.key->name));
        const bool isOwnType = shown.key->name == "type" && !type.empty();
        text +=
            isOwnType ? indented(depth + 1) + element("string", type) : valueOf(shown, depth + 1, nesting);
    }
    return text + indented(depth) + "</dict>\n";
}

}  // namespace

std::string exampleOf(const KeyTable& table) { return dictionary(table, 0, 0); }

}  // namespace multiscene
