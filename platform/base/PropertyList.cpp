#include "platform/base/PropertyList.h"

#include <plist/plist.h>
#include <cmath>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

#include "platform/base/BinaryPropertyListScan.h"
#include "platform/base/File.h"
#include "platform/base/PropertyListFaults.h"

namespace platform {

namespace {

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, NodeDeleter>;

std::string_view asText(std::span<const uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The parser refuses a byte-order mark and trailing blanks, which editors leave behind.
/// The text without a byte order mark and the blanks at its end.
std::string_view xmlDocument(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const size_t end = text.find_last_not_of(" \t\r\n");
    return end == std::string_view::npos ? std::string_view() : text.substr(0, end + 1);
}

struct XmlShape {
    int depth = 0;        ///< the deepest nesting of <dict> and <array>
    uint64_t values = 0;  ///< elements, keys among them
};

/// Counted without parsing.
XmlShape xmlShape(std::string_view text) {
    XmlShape shape;
    int depth = 0;
    for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at + 1)) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("<!--")) {
            at = text.find("-->", at);
            if (at == std::string_view::npos) break;
        } else if (rest.starts_with("</dict") || rest.starts_with("</array")) {
            --depth;
        } else if (rest.starts_with("<dict") || rest.starts_with("<array")) {
            shape.depth = std::max(shape.depth, ++depth);
        }
        const bool isElement = rest.size() > 1 && std::isalpha(static_cast<unsigned char>(rest[1])) != 0;
        shape.values += isElement && !rest.starts_with("<plist");
    }
    return shape;
}

/// ", line 12: …" for a list that the parser refuses.
std::string firstFault(std::string_view text) {
    const auto faults = propertyListFaults({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    if (faults.empty()) return "";
    return ", line " + std::to_string(faults.front().line) + ": " + faults.front().message;
}

Value fromNode(plist_t node);

Value fromArray(plist_t node) {
    Value::Array items;
    const uint32_t count = plist_array_get_size(node);
    items.reserve(count);
    for (uint32_t i = 0; i < count; ++i) items.push_back(fromNode(plist_array_get_item(node, i)));
    return Value(std::move(items));
}

Value fromDictionary(plist_t node) {
    Value::Dictionary entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        if (!item) {
            std::free(key);
            break;
        }
        entries.insert_or_assign(key, fromNode(item));
        std::free(key);
    }
    std::free(iterator);
    return Value(std::move(entries));
}

Value fromScalar(plist_t node, plist_type type) {
    switch (type) {
        case PLIST_BOOLEAN: {
            uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return Value(value != 0);
        }
        case PLIST_UINT: {
            uint64_t value = 0;
            plist_get_uint_val(node, &value);
            return Value(static_cast<int64_t>(value));  // negative numbers are kept as two's complement
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return Value(std::isfinite(value) ? value : 0.0);
        }
        case PLIST_STRING: {
            char* text = nullptr;
            plist_get_string_val(node, &text);
            Value value(text ? text : "");
            std::free(text);
            return value;
        }
        case PLIST_DATA: {
            char* bytes = nullptr;
            uint64_t size = 0;
            plist_get_data_val(node, &bytes, &size);
            Value::Data data;
            if (bytes) data.bytes.assign(bytes, bytes + size);
            std::free(bytes);
            return Value(std::move(data));
        }
        case PLIST_DATE: {
            int32_t seconds = 0, microseconds = 0;
            plist_get_date_val(node, &seconds, &microseconds);
            return Value(Value::Date{seconds + microseconds / 1e6});
        }
        default:
            return Value();
    }
}

Value fromNode(plist_t node) {
    const plist_type type = plist_get_node_type(node);
    if (type == PLIST_ARRAY) return fromArray(node);
    if (type == PLIST_DICT) return fromDictionary(node);
    return fromScalar(node, type);
}

plist_t toNode(const Value& value) {
    switch (value.type()) {
        case Value::Type::Bool:
            return plist_new_bool(value.boolValue());
        case Value::Type::Integer:
            return plist_new_uint(static_cast<uint64_t>(value.integerValue()));
        case Value::Type::Real:
            return plist_new_real(value.doubleValue());
        case Value::Type::String:
            return plist_new_string(value.stringValue().c_str());
        case Value::Type::Data:
            return plist_new_data(reinterpret_cast<const char*>(value.data().data()), value.data().size());
        case Value::Type::Date:
            return plist_new_date(static_cast<int32_t>(value.dateSeconds()), 0);
        case Value::Type::Array: {
            plist_t node = plist_new_array();
            for (const Value& item : value.array()) plist_array_append_item(node, toNode(item));
            return node;
        }
        case Value::Type::Dictionary: {
            plist_t node = plist_new_dict();
            for (const auto& [key, item] : value.dictionary())
                plist_dict_set_item(node, key.c_str(), toNode(item));
            return node;
        }
        case Value::Type::None:
            break;
    }
    return plist_new_string("");
}

/// Of a shape that is either form's.
void requireWithin(const auto& shape, const std::string& name, ErrorKind kind,
                   const PropertyListLimits& limits) {
    if (shape.depth > limits.maxDepth)
        throw Error(kind, "nested deeper than " + std::to_string(limits.maxDepth) + " levels", name);
    if (shape.values > limits.maxValues)
        throw Error(kind, "holds more than " + std::to_string(limits.maxValues) + " values", name);
}

Node parseBinary(std::span<const uint8_t> bytes, const std::string& name, ErrorKind kind,
                 const PropertyListLimits& limits) {
    const BinaryPropertyListShape shape = scanBinaryPropertyList(bytes, limits.maxValues);
    if (!shape.wellFormed) throw Error(kind, "not a valid binary property list", name);
    requireWithin(shape, name, kind, limits);
    // One text may be named many times, and is copied as often.
    if (shape.bytes > limits.maxBytes)
        throw Error(kind, "unfolds to more than " + std::to_string(limits.maxBytes) + " bytes", name);
    plist_t root = nullptr;
    plist_from_bin(asText(bytes).data(), static_cast<uint32_t>(bytes.size()), &root);
    return Node(root);
}

Node parseXml(std::string_view text, const std::string& name, ErrorKind kind,
              const PropertyListLimits& limits) {
    // The parser ends the program at a text with a zero in it.
    if (text.find('\0') != std::string_view::npos)
        throw Error(kind, "not a valid property list: holds a zero byte", name);
    requireWithin(xmlShape(text), name, kind, limits);
    plist_t root = nullptr;
    plist_from_xml(text.data(), static_cast<uint32_t>(text.size()), &root);
    if (!root) throw Error(kind, "not a valid property list" + firstFault(text), name);
    return Node(root);
}

}  // namespace

Value parsePropertyList(std::span<const uint8_t> bytes, const std::string& name, ErrorKind kind,
                        const PropertyListLimits& limits) {
    if (bytes.size() > limits.maxBytes)
        throw Error(kind, "larger than " + std::to_string(limits.maxBytes) + " bytes", name);
    const Node root = isBinaryPropertyList(bytes) ? parseBinary(bytes, name, kind, limits)
                                                  : parseXml(xmlDocument(asText(bytes)), name, kind, limits);
    if (!root) throw Error(kind, "not a valid property list", name);
    return fromNode(root.get());
}

Value readPropertyList(const std::filesystem::path& file, ErrorKind kind) {
    return parsePropertyList(readFile(file, PropertyListLimits().maxBytes, kind), file.string(), kind);
}

std::string propertyListXml(const Value& value) {
    const Node node(toNode(value));
    char* text = nullptr;
    uint32_t size = 0;
    plist_to_xml(node.get(), &text, &size);
    std::string xml(text ? text : "", size);
    std::free(text);
    return xml;
}

void writePropertyList(const std::filesystem::path& file, const Value& value) {
    writeFileAtomically(file, propertyListXml(value));
}

}  // namespace platform
