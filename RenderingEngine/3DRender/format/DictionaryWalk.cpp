#include "format/DictionaryWalk.h"

namespace multiscene {

using platform::Value;

namespace {

void walkValue(const Key& key, const Value& value, const std::string& keyPath, DictionaryVisitor& visitor) {
    if (!key.children) return;
    if (key.type == KeyType::Dictionary && value.isDictionary())
        walkDictionary(*key.children, value, keyPath, visitor);
    const Value::Array& elements = value.array();
    for (size_t index = 0; index < elements.size(); ++index)
        if (elements[index].isDictionary())
            walkDictionary(*key.children, elements[index], keyPath + "[" + std::to_string(index) + "]",
                           visitor);
}

}  // namespace

void walkDictionary(const KeyTable& table, const Value& content, const std::string& keyPath,
                    DictionaryVisitor& visitor) {
    const KeySet keys(table, content);
    if (keys.isUndecided()) return visitor.unknownType(keys, content, keyPath);
    visitor.dictionary(keys, content, keyPath);
    for (const auto& [name, value] : content.dictionary()) {
        const std::string path = keyPath.empty() ? name : keyPath + "." + name;
        if (const Key* key = keys.find(name)) {
            Key complete = *key;
            complete.file = keys.fileOf(*key);
            visitor.known(complete, value, path);
            walkValue(*key, value, path, visitor);
        } else {
            visitor.unknown(keys, name, value, path);
        }
    }
}

}  // namespace multiscene
