#include "platform/base/Json.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

#include "platform/base/Limits.h"

namespace platform {

namespace {

using nlohmann::json;

constexpr int maxDepth = limitOf<int>("maxJsonDepth");

Value fromJson(const json& node) {
    switch (node.type()) {
        case json::value_t::boolean:
            return Value(node.get<bool>());
        case json::value_t::number_unsigned:
            if (node.get<uint64_t>() > std::numeric_limits<int64_t>::max()) return Value(node.get<double>());
            [[fallthrough]];
        case json::value_t::number_integer:
            return Value(node.get<int64_t>());
        case json::value_t::number_float:
            return Value(node.get<double>());
        case json::value_t::string:
            return Value(node.get<std::string>());
        case json::value_t::array: {
            Value::Array items;
            for (const json& item : node) items.push_back(fromJson(item));
            return Value(std::move(items));
        }
        case json::value_t::object: {
            Value::Dictionary entries;
            for (const auto& [key, item] : node.items()) entries.emplace(key, fromJson(item));
            return Value(std::move(entries));
        }
        default:
            return Value();
    }
}

json toJson(const Value& value) {
    switch (value.type()) {
        case Value::Type::Bool:
            return value.boolValue();
        case Value::Type::Integer:
            return value.integerValue();
        case Value::Type::Real:
            return std::isfinite(value.doubleValue()) ? json(value.doubleValue()) : json();
        case Value::Type::String:
            return value.stringValue();
        case Value::Type::Data:
            return std::string(value.data().begin(), value.data().end());
        case Value::Type::Date:
            return value.dateSeconds();
        case Value::Type::Array: {
            json items = json::array();
            for (const Value& item : value.array()) items.push_back(toJson(item));
            return items;
        }
        case Value::Type::Dictionary: {
            json entries = json::object();
            for (const auto& [key, item] : value.dictionary()) entries[key] = toJson(item);
            return entries;
        }
        case Value::Type::None:
            break;
    }
    return json();
}

/// The library's words without the name of its exception: "[json.exception.parse_error.101] parse error at
/// line 1, column 2: …".
std::string withoutExceptionName(const std::string& words) {
    const std::string rest = words.substr(words.find(' ') + 1);
    constexpr std::string_view start = "parse error ";
    return rest.starts_with(start) ? rest.substr(start.size()) : rest;
}

}  // namespace

Value parseJson(std::string_view text, const std::string& name, ErrorKind kind) {
    const auto refuseDeep = [&](int outer, json::parse_event_t event, json&) {
        const bool begins =
            event == json::parse_event_t::array_start || event == json::parse_event_t::object_start;
        if (begins && outer >= maxDepth)
            throw Error(kind, "nested deeper than " + std::to_string(maxDepth) + " levels", name);
        return true;
    };
    try {
        return fromJson(json::parse(text, refuseDeep));
    } catch (const json::exception& fault) {
        throw Error(kind, "not valid JSON, " + withoutExceptionName(fault.what()), name);
    }
}

std::string jsonText(const Value& value) {
    return toJson(value).dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace platform
