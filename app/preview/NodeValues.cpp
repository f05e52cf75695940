#include "app/preview/NodeValues.h"

#include <algorithm>
#include <array>
#include <utility>

#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"
#include "core/Material/SceneTextures.h"
#include "core/QVObject3DTextureBase.h"
#include "core/QVScene3D.h"
#include "dataMode/TextSettings.h"

namespace multiscene {

using platform::Value;

namespace {

/// The key in what says what a node shows: a picture's or a text's.
std::string keyOfPicture(const Value& textureInfo) {
    static constexpr std::array<std::pair<const char*, const char*>, 3> kinds{
        {{"image", "texture"}, {"filterImage", "texture"}, {"text2d", "textString"}}};
    const std::string type = textureInfo.string("textureType");
    for (const auto& [kind, key] : kinds)
        if (type == kind) return textureInfo.string(key);
    return {};
}

std::string keyOfLetters(const Value& fontInfo) { return fontInfo.string("textString"); }

/// Sorts the texts of a scene file.
class Texts {
  public:
    Texts(std::set<std::string>& shown, std::set<std::string>& used) : shown_(shown), used_(used) {}

    void add(const Value& value) {
        if (value.isString()) used_.insert(value.stringValue());
        for (const Value& each : value.array()) add(each);
        for (const auto& [key, each] : value.dictionary()) addNamed(key, each);
    }

  private:
    void addNamed(const std::string& key, const Value& value) {
        if (key == "name") return;  // what messages call a node
        const std::string shown = key == "TextureInfo"       ? keyOfPicture(value)
                                  : key == "TextureFontInfo" ? keyOfLetters(value)
                                                             : std::string();
        if (shown.empty()) return add(value);
        shown_.insert(shown);
        for (const auto& [name, each] : value.dictionary())
            if (!each.isString() || each.stringValue() != shown) add(each);
    }

    std::set<std::string>& shown_;
    std::set<std::string>& used_;
};

/// Whether a node's dictionary or one within it shows the target of a key; an empty one stands for any.
bool showsTarget(const Value& content, const std::string& key) {
    if (content.string("textureType") == "RTTTexture" &&
        (key.empty() || content.string("textureMapKey") == key))
        return true;
    const auto& array = content.array();
    const auto& dictionary = content.dictionary();
    return std::ranges::any_of(array, [&](const Value& each) { return showsTarget(each, key); }) ||
           std::ranges::any_of(dictionary, [&](const auto& each) { return showsTarget(each.second, key); });
}

bool hasTarget(const Value& content) {
    const auto& array = content.array();
    const auto& dictionary = content.dictionary();
    return content.boolean("isRenderToTexture") || std::ranges::any_of(array, hasTarget) ||
           std::ranges::any_of(dictionary, [](const auto& each) { return hasTarget(each.second); });
}

/// Whether it draws into a texture in every frame of its scene, and out of nothing that was drawn before.
bool isDrawnInEachFrame(const Value& node, const Value& scene) {
    const Value& range = node["FpsInfo"];
    const bool isAlways = range.integer("startFps") == 0 && !range["startFps"].isString() &&
                          (!range.has("endFps") ||
                           (range["endFps"].isNumber() &&
                            range.integer("endFps") >= scene["TimeSource"]["FpsInfo"].integer("endFps") &&
                            scene["TimeSource"]["FpsInfo"]["endFps"].isNumber()));
    return isAlways && range.boolean("isRenderToTexture") && !showsTarget(node, "") &&
           !hasTarget(node["childNode"]);
}

/// Whether whatever shows a target of this scene is drawn after it, in the same frame: drawn twice, a frame
/// is the same then.
bool hasFreshTargets(const Value& scene) {
    const auto& nodes = scene.array("object3D");
    const auto depthOf = [](const Value& node) { return node["FpsInfo"].real("RenderDepth"); };
    return std::ranges::all_of(nodes, [&](const Value& target) {
        if (!hasTarget(target)) return true;
        const std::string key = target["FpsInfo"].string("textureMapKey");
        return isDrawnInEachFrame(target, scene) && std::ranges::all_of(nodes, [&](const Value& other) {
                   return !showsTarget(other, key) || depthOf(other) < depthOf(target);
               });
    });
}

void reload(QVObjectContainer3D& node, int64_t frame) {
    if (auto* drawable = dynamic_cast<QVObject3DTextureBase*>(&node); drawable && drawable->material())
        drawable->reloadTexture();
    if (auto* letters = dynamic_cast<QVGLFontTextObjectBase*>(&node)) letters->reloadLetters(frame);
}

void reload(const QVObjectContainer3D::Children& nodes, int64_t frame, const std::set<std::string>& keys) {
    for (const auto& node : nodes) {
        if (keys.contains(shownKeyOf(*node))) reload(*node, frame);
        reload(node->children(), frame, keys);
    }
}

}  // namespace

std::string shownKeyOf(const QVObjectContainer3D& node) {
    if (const auto* drawable = dynamic_cast<const QVObject3DTextureBase*>(&node))
        return keyOfPicture(drawable->textureInfo());
    if (const auto* letters = dynamic_cast<const QVGLFontTextObjectBase*>(&node))
        return keyOfLetters(letters->fontInfo());
    return {};
}

NodeValues::NodeValues(const SceneGroup& group)
    : isExchangeable_(
          !outlastTheirTurn(group) &&
          std::ranges::all_of(group.scenes,
                              [](const auto& scene) { return hasFreshTargets(scene.second.content); })),
      identifiers_(group.identifiers()) {
    Texts texts(shown_, used_);
    for (const auto& [number, scene] : group.scenes) texts.add(scene.content);
}

/// What nodes name: without the identifier of a scene, and without what says that it is a text's size.
std::string NodeValues::keyOf(const std::string& mapKey) const {
    const std::string scale = kUserTextScale;
    std::string key = mapKey.starts_with(scale) ? mapKey.substr(scale.size()) : mapKey;
    if (shown_.contains(key)) return key;
    for (const std::string& identifier : identifiers_)
        if (key.ends_with(identifier) && shown_.contains(key.substr(0, key.size() - identifier.size())))
            return key.substr(0, key.size() - identifier.size());
    return key;
}

std::optional<std::set<std::string>> NodeValues::changedKeys(const Value& before, const Value& after) const {
    std::set<std::string> changed;
    const auto compare = [&](const Value& one, const Value& other) {
        for (const auto& [key, value] : one.dictionary())
            if (!(other[key] == value)) changed.insert(keyOf(key));
    };
    compare(before, after);
    compare(after, before);
    const bool isEach = std::ranges::all_of(
        changed, [&](const std::string& key) { return shown_.contains(key) && !used_.contains(key); });
    if (!changed.empty() && !(isExchangeable_ && isEach)) return std::nullopt;
    return changed;
}

void reloadNodes(const RenderDriver& driver, const std::set<std::string>& keys) {
    for (const auto& scene : {driver.currentScene(), driver.nextScene(), driver.transitionsScene()})
        if (scene) reload(scene->children(), scene->currentRenderTime().value, keys);
}

}  // namespace multiscene
