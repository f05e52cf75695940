#include "app/Check/DictionaryWalk.h"

#include "core/NodeTypes.h"
#include "core/QVObject3DFpsBase.h"
#include "core/VideoTimeSource.h"
#include "core/component/QVObject3DComponentBase.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene {

using platform::Value;

namespace {

template <typename Types>
std::vector<std::string_view> typeNames() {
    std::vector<std::string_view> names;
    for (const auto& [name, entry] : Types::all()) names.push_back(name);
    return names;
}

/// Dictionaries whose keys depend on their "type".
struct TypedDictionary {
    const char* kind;
    const KeyTable* (*tableOf)(std::string_view type);
    std::vector<std::string_view> (*types)();
};

template <typename Types>
const KeyTable* tableOf(std::string_view type) {
    const auto* entry = Types::find(type);
    return entry ? entry->keys : nullptr;
}

template <typename Types>
constexpr TypedDictionary typedDictionary(const char* kind) {
    return {kind, tableOf<Types>, typeNames<Types>};
}

constexpr TypedDictionary kNode = typedDictionary<NodeTypes>("node");
constexpr TypedDictionary kComponent = typedDictionary<ComponentTypes>("component");
constexpr TypedDictionary kTimeSource = typedDictionary<TimeSourceTypes>("time-source");

const TypedDictionary* typedDictionaryOf(const Key& key) {
    if (key.type == KeyType::Nodes) return &kNode;
    if (key.children == &componentKeys) return &kComponent;
    return key.name == "TimeSource" ? &kTimeSource : nullptr;
}

void walkTyped(const TypedDictionary& typed, const Value& content, const std::string& keyPath,
               DictionaryVisitor& visitor) {
    const std::string type = content.string("type");
    if (const KeyTable* table = typed.tableOf(type))
        walkDictionary(*table, content, keyPath, visitor);
    else
        visitor.unknownType(typed.kind, type, typed.types(), keyPath);
}

void walkChild(const Key& key, const Value& content, const std::string& keyPath, DictionaryVisitor& visitor) {
    if (!content.isDictionary()) return;
    if (const TypedDictionary* typed = typedDictionaryOf(key))
        walkTyped(*typed, content, keyPath, visitor);
    else if (key.children)
        walkDictionary(*key.children, content, keyPath, visitor);
}

void walkValue(const Key& key, const Value& value, const std::string& keyPath, DictionaryVisitor& visitor) {
    if (key.type == KeyType::Dictionary) walkChild(key, value, keyPath, visitor);
    const Value::Array& elements = value.array();
    for (size_t index = 0; index < elements.size(); ++index)
        walkChild(key, elements[index], keyPath + "[" + std::to_string(index) + "]", visitor);
}

}  // namespace

void walkDictionary(const KeyTable& table, const Value& content, const std::string& keyPath,
                    DictionaryVisitor& visitor) {
    visitor.dictionary(table, content, keyPath);
    for (const auto& [name, value] : content.dictionary()) {
        const std::string path = keyPath.empty() ? name : keyPath + "." + name;
        const Key* key = table.find(name);
        if (!key) {
            visitor.unknown(table, name, value, path);
            continue;
        }
        visitor.known(*key, value, path);
        walkValue(*key, value, path, visitor);
    }
}

std::vector<std::string_view> keyNames(const KeyTable& table) {
    std::vector<std::string_view> names;
    for (const KeyTable* part = &table; part; part = part->base)
        for (const Key& key : part->keys) names.push_back(key.name);
    return names;
}

}  // namespace multiscene
