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

void reload(QVObjectContainer3D& node, int64_t frame) {
    if (auto* drawable = dynamic_cast<QVObject3DTextureBase*>(&node); drawable && drawable->material())
        drawable->loadTexture();
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
    : isExchangeable_(!hasRenderTargets(group) && !outlastTheirTurn(group)),
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
