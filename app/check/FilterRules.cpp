#include "3DObject/QuadObject3D/FilterList.h"
#include "app/check/KeyJudge.h"
#include "app/check/SceneRules.h"
#include "app/check/Suggestion.h"
#include "format/DictionaryWalk.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

using platform::Value;

namespace {

/// Every number of a filter has a name, and a range that its key frames keep to as well.
class FilterMotions : public DictionaryVisitor {
  public:
    FilterMotions(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        if (!keys.has(filterKeys)) return;
        const Value::Array& moves = content.array("AnimationInfo");
        for (size_t index = 0; index < moves.size(); ++index)
            judge(keys, moves[index], keyPath + ".AnimationInfo[" + std::to_string(index) + "]");
    }

    void known(const Key& key, const Value& value, const std::string& keyPath) override {
        if (key.children != &filterKeys || value.array().size() <= FilterList::most) return;
        add(keyPath, "has " + std::to_string(value.array().size()) + " filters, and only the first " +
                         std::to_string(FilterList::most) + " are applied");
    }

  private:
    void judge(const KeySet& keys, const Value& move, const std::string& keyPath) {
        const std::string name = FilterList::movedNumber(move);
        const Key* number = keys.find(name);
        if (!number || number->type != KeyType::Number) {
            findings_.push_back({Severity::Error, scene_.file, keyPath + ".number",
                                 "\"" + name + "\" is no number of this filter", remedy(keys, name)});
            return;
        }
        for (const char* end : {"start", "end"}) {
            const double value = move.real(end);
            if (move.has(end) && !(value >= number->minimum && value <= number->maximum))
                add(keyPath + "." + end,
                    "leaves the range of \"" + name + "\", which takes " + rangeText(*number));
        }
    }
    static std::string remedy(const KeySet& keys, const std::string& name) {
        std::vector<std::string_view> numbers;
        for (const KeyTable* table : keys.tables())
            for (const Key& key : table->keys)
                if (key.type == KeyType::Number) numbers.push_back(key.name);
        if (const std::string meant = didYouMean(name, numbers); !meant.empty()) return meant;
        std::string list;
        for (const std::string_view number : numbers)
            list += (list.empty() ? "" : ", ") + std::string(number);
        return "it has: " + list;
    }
    void add(const std::string& keyPath, std::string message) {
        findings_.push_back({Severity::Warning, scene_.file, keyPath, std::move(message), {}});
    }

    const SceneView& scene_;
    Findings& findings_;
};

}  // namespace

void filtersMoveWhatTheyHave(const SceneView& scene, Findings& findings) {
    FilterMotions visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
