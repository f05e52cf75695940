#include "sceneFile/SceneLimits.h"

#include <utility>

#include "core/QVObjectContainer3D.h"
#include "format/DictionaryWalk.h"
#include "platform/base/Limits.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

namespace {

using platform::Limits;
using platform::Value;

/// A number of things, and where one too many was met.
struct Count {
    uint64_t limit;
    uint64_t number = 0;
    std::string keyPath = {};

    void add(const std::string& at) {
        if (++number == limit + 1) keyPath = at;
    }
};

class Counter : public DictionaryVisitor {
  public:
    Count nodes{Limits::maxSceneNodes}, files{Limits::maxSceneFiles};

    void dictionary(const KeySet& keys, const Value&, const std::string& keyPath) override {
        if (keys.has(containerKeys)) nodes.add(keyPath);
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        const bool namesFile = key.lookup == KeyLookup::Path || key.lookup == KeyLookup::UserPath;
        if (namesFile && value.isString() && !value.stringValue().empty()) files.add(keyPath);
    }
};

}  // namespace

std::optional<platform::Error> sceneBeyondLimits(const Value& scene, const std::string& file) {
    Counter counter;
    walkDictionary(sceneFileKeys, scene, "", counter);
    for (const auto& [count, things] :
         {std::pair(&counter.nodes, "nodes"), std::pair(&counter.files, "names of files")})
        if (count->number > count->limit)
            return platform::Error(platform::ErrorKind::Template,
                                   platform::beyondLimit(count->number, things, count->limit), file,
                                   count->keyPath);
    return std::nullopt;
}

}  // namespace multiscene
