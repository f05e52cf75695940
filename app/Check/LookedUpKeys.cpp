#include "app/Check/LookedUpKeys.h"

#include <algorithm>

#include "app/Check/DictionaryWalk.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene {

namespace {

class LookUps : public DictionaryVisitor {
  public:
    void dictionary(const KeyTable&, const platform::Value& content, const std::string& keyPath) override {
        if (content.string("textureType") == "mp4Video") videoKey_ = keyPath + ".texture";
    }

    void known(const Key& key, const platform::Value& value, const std::string& keyPath) override {
        if (!value.isString()) return;
        if (key.lookup == KeyLookup::UserMap) keys.emplace(value.stringValue(), LookUpKind::Text);
        if (key.lookup == KeyLookup::UserPath)
            keys[value.stringValue()] = keyPath == videoKey_ ? LookUpKind::Video : LookUpKind::File;
    }

    LookedUpKeys keys;

  private:
    std::string videoKey_;
};

}  // namespace

LookedUpKeys lookedUpKeys(const platform::Value& sceneFile) {
    LookUps visitor;
    walkDictionary(sceneFileKeys, sceneFile, "", visitor);
    return visitor.keys;
}

bool isLookedUp(const std::string& key, const LookedUpKeys& lookedUp,
                const std::set<std::string>& identifiers) {
    if (lookedUp.contains(key)) return true;
    return std::any_of(identifiers.begin(), identifiers.end(), [&](const std::string& identifier) {
        return key.ends_with(identifier) && lookedUp.contains(key.substr(0, key.size() - identifier.size()));
    });
}

}  // namespace multiscene
