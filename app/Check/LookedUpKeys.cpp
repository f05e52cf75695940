#include "app/Check/LookedUpKeys.h"

#include <algorithm>

#include "app/Check/DictionaryWalk.h"
#include "app/Check/SceneFileKeys.h"

namespace multiscene {

namespace {

class LookUps : public DictionaryVisitor {
  public:
    void known(const Key& key, const platform::Value& value, const std::string&) override {
        if (!value.isString()) return;
        if (key.lookup == KeyLookup::UserMap || key.lookup == KeyLookup::UserPath)
            keys.insert(value.stringValue());
    }

    std::set<std::string> keys;
};

}  // namespace

std::set<std::string> lookedUpKeys(const platform::Value& sceneFile) {
    LookUps visitor;
    walkDictionary(sceneFileKeys, sceneFile, "", visitor);
    return visitor.keys;
}

bool isLookedUp(const std::string& key, const std::set<std::string>& lookedUp,
                const std::set<std::string>& identifiers) {
    if (lookedUp.contains(key)) return true;
    return std::any_of(identifiers.begin(), identifiers.end(), [&](const std::string& identifier) {
        return key.ends_with(identifier) && lookedUp.contains(key.substr(0, key.size() - identifier.size()));
    });
}

}  // namespace multiscene
