#include "app/Check/LookedUpKeys.h"

#include <algorithm>

#include "app/Check/DictionaryWalk.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene {

namespace {

class LookUps : public DictionaryVisitor {
  public:
    void known(const Key& key, const platform::Value& value, const std::string&) override {
        if (!value.isString()) return;
        if (key.lookup == KeyLookup::UserMap || key.lookup == KeyLookup::UserPath)
            keys.emplace(value.stringValue(), key.lookup);
    }

    LookedUpKeys keys;
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
