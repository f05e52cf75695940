#include "app/check/LookedUpKeys.h"

#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

namespace {

class LookUps : public DictionaryVisitor {
  public:
    void known(const Key& key, const platform::Value& value, const std::string&) override {
        if (!value.isString()) return;
        if (key.lookup == KeyLookup::UserMap) keys.emplace(value.stringValue(), LookUpKind::Text);
        if (key.lookup == KeyLookup::UserPath) addFile(value.stringValue(), key.file == KeyFile::Video);
    }

    LookedUpKeys keys;

  private:
    /// A video stays one where its sound is looked up beside it.
    void addFile(const std::string& key, bool isVideo) {
        LookUpKind& kind = keys.try_emplace(key, LookUpKind::File).first->second;
        if (kind != LookUpKind::Video) kind = isVideo ? LookUpKind::Video : LookUpKind::File;
    }
};

}  // namespace

LookedUpKeys lookedUpKeys(const platform::Value& sceneFile) {
    LookUps visitor;
    walkDictionary(sceneFileKeys, sceneFile, "", visitor);
    return visitor.keys;
}

std::optional<LookUpKind> lookUpOf(const std::string& key, const LookedUpKeys& lookedUp,
                                   const std::set<std::string>& identifiers) {
    if (const auto found = lookedUp.find(key); found != lookedUp.end()) return found->second;
    for (const std::string& identifier : identifiers) {
        if (!key.ends_with(identifier)) continue;
        const auto found = lookedUp.find(key.substr(0, key.size() - identifier.size()));
        if (found != lookedUp.end()) return found->second;
    }
    return std::nullopt;
}

}  // namespace multiscene
