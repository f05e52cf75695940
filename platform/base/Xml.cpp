#include "platform/base/Xml.h"

#include <pugixml.hpp>

#include "platform/base/Limits.h"

namespace platform {

namespace {

constexpr int maxDepth = limitOf<int>("maxXmlDepth");

struct TooDeep {};

using Lists = std::map<std::string, Value::Array>;

Value valueOf(const pugi::xml_node& node, int depth);

Lists childrenOf(const pugi::xml_node& node, int depth) {
    Lists lists;
    for (const pugi::xml_node& child : node.children())
        if (child.type() == pugi::node_element) lists[child.name()].push_back(valueOf(child, depth + 1));
    return lists;
}

/// What has one name is gathered first: adding to a value one by one would copy the list each time.
Value::Dictionary dictionaryOf(Lists lists) {
    Value::Dictionary dictionary;
    for (auto& [name, list] : lists)
        dictionary[name] = list.size() == 1 ? std::move(list.front()) : Value(std::move(list));
    return dictionary;
}

Value valueOf(const pugi::xml_node& node, int depth) {
    if (depth > maxDepth) throw TooDeep();
    Lists lists = childrenOf(node, depth);
    for (const pugi::xml_attribute& attribute : node.attributes())
        lists[attribute.name()].push_back(Value(attribute.value()));
    return lists.empty() ? Value(node.text().as_string()) : Value(dictionaryOf(std::move(lists)));
}

}  // namespace

std::optional<Value> parseXml(const std::vector<uint8_t>& bytes) {
    pugi::xml_document document;
    if (!document.load_buffer(bytes.data(), bytes.size())) return std::nullopt;
    try {
        return Value(dictionaryOf(childrenOf(document, 0)));
    } catch (const TooDeep&) {
        return std::nullopt;
    }
}

}  // namespace platform
