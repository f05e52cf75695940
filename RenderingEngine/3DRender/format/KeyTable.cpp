#include "format/KeyTable.h"

#include <stdexcept>

#include "other/QVUtil.h"

namespace multiscene {

const Key* KeyTable::find(std::string_view name) const {
    for (const KeyTable* table = this; table; table = table->base)
        for (const Key& key : table->keys)
            if (key.name == name) return &key;
    return nullptr;
}

const Key& KeyReader::keyNamed(std::string_view key) const {
    const Key* found = table_.find(key);
    if (!found)
        throw std::logic_error("key " + std::string(key) + " is not described in " +
                               std::string(table_.owner));
    return *found;
}

platform::Value KeyReader::value(std::string_view key) const {
    const Key& description = keyNamed(key);
    const platform::Value& given = dictionary_[key];
    if (!given.isNone() || description.fallback.empty()) return given;
    return platform::Value(description.fallback);
}

const platform::Value::Array& KeyReader::array(std::string_view key) const {
    keyNamed(key);
    return dictionary_.array(key);
}

glm::vec2 KeyReader::vector2(std::string_view key) const { return vectorOf<2>(value(key)); }
glm::vec3 KeyReader::vector3(std::string_view key) const { return vectorOf<3>(value(key)); }
glm::vec4 KeyReader::vector4(std::string_view key) const { return vectorOf<4>(value(key)); }

}  // namespace multiscene
