#include "platform/base/Xml.h"

#include <pugixml.hpp>

namespace platform {

namespace {

constexpr int maxDepth = 64;

struct TooDeep {};

void add(Value::Dictionary& dictionary, const char* name, Value value) {
    Value& place = dictionary[name];
    if (place.isNone()) {
        place = std::move(value);
        return;
    }
    Value::Array list = place.isArray() ? place.array() : Value::Array{place};
    list.push_back(std::move(value));
    place = Value(std::move(list));
}

Value valueOf(const pugi::xml_node& node, int depth);

/// Children of one name are gathered first: adding them to a value one by one would copy the list each time.
Value::Dictionary childrenOf(const pugi::xml_node& node, int depth) {
    std::map<std::string, Value::Array> lists;
    for (const pugi::xml_node& child : node.children())
        if (child.type() == pugi::node_element) lists[child.name()].push_back(valueOf(child, depth + 1));
    Value::Dictionary dictionary;
    for (auto& [name, list] : lists)
        dictionary[name] = list.size() == 1 ? std::move(list.front()) : Value(std::move(list));
    return dictionary;
}

Value valueOf(const pugi::xml_node& node, int depth) {
    if (depth > maxDepth) throw TooDeep();
    Value::Dictionary dictionary = childrenOf(node, depth);
    for (const pugi::xml_attribute& attribute : node.attributes())
        add(dictionary, attribute.name(), Value(attribute.value()));
    return dictionary.empty() ? Value(node.text().as_string()) : Value(std::move(dictionary));
}

}  // namespace

std::optional<Value> parseXml(const std::vector<uint8_t>& bytes) {
    pugi::xml_document document;
    if (!document.load_buffer(bytes.data(), bytes.size())) return std::nullopt;
    try {
        return Value(childrenOf(document, 0));
    } catch (const TooDeep&) {
        return std::nullopt;
    }
}

}  // namespace platform
