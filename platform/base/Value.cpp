#include "platform/base/Value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace platform {

namespace {

std::string_view trimmedNumber(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

/// "nan" and "inf" are words, not numbers.
template <typename Number>
Number textToReal(std::string_view text) {
    text = trimmedNumber(text);
    Number value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc::invalid_argument || !std::isfinite(value) ? 0 : value;
}

int64_t textToInteger(std::string_view text) {
    text = trimmedNumber(text);
    int64_t value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        return text.front() == '-' ? std::numeric_limits<int64_t>::min()
                                   : std::numeric_limits<int64_t>::max();
    return result.ec == std::errc() ? value : 0;
}

int64_t saturated(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 9223372036854775807.0) return std::numeric_limits<int64_t>::max();
    if (value <= -9223372036854775808.0) return std::numeric_limits<int64_t>::min();
    return static_cast<int64_t>(value);
}

bool textToBool(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) return false;
    const char first = text[start];
    return first == 'Y' || first == 'y' || first == 'T' || first == 't' || textToInteger(text) != 0;
}

std::string realText(double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    return std::string(buffer, result.ptr);
}

template <typename T>
const T& emptyInstance() {
    static const T empty{};
    return empty;
}

}  // namespace

int64_t Value::integerValue() const {
    switch (type()) {
        case Type::Bool:
            return std::get<bool>(storage_) ? 1 : 0;
        case Type::Integer:
            return std::get<int64_t>(storage_);
        case Type::Real:
            return saturated(std::get<double>(storage_));
        case Type::String:
            return textToInteger(std::get<std::string>(storage_));
        default:
            return 0;
    }
}

int32_t Value::intValue() const {
    const int64_t value = integerValue();
    if (value > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    if (value < std::numeric_limits<int32_t>::min()) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

double Value::doubleValue() const {
    switch (type()) {
        case Type::Real:
            return std::get<double>(storage_);
        case Type::String:
            return textToReal<double>(std::get<std::string>(storage_));
        default:
            return static_cast<double>(integerValue());
    }
}

float Value::floatValue() const {
    // Text goes straight to single precision: rounding twice could move the last bit.
    if (type() == Type::String) return textToReal<float>(std::get<std::string>(storage_));
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(doubleValue(), -largest, largest));
}

bool Value::boolValue() const {
    if (type() == Type::String) return textToBool(std::get<std::string>(storage_));
    if (type() == Type::Real) return std::get<double>(storage_) != 0;
    return integerValue() != 0;
}

std::string Value::stringValue() const {
    switch (type()) {
        case Type::String:
            return std::get<std::string>(storage_);
        case Type::Bool:
        case Type::Integer:
            return std::to_string(integerValue());
        case Type::Real:
            return realText(std::get<double>(storage_));
        default:
            return {};
    }
}

const Value::Array& Value::array() const {
    return isArray() ? *std::get<std::shared_ptr<const Array>>(storage_) : emptyInstance<Array>();
}

const Value::Dictionary& Value::dictionary() const {
    return isDictionary() ? *std::get<std::shared_ptr<const Dictionary>>(storage_)
                          : emptyInstance<Dictionary>();
}

const std::vector<uint8_t>& Value::data() const {
    return type() == Type::Data ? std::get<std::shared_ptr<const Data>>(storage_)->bytes
                                : emptyInstance<std::vector<uint8_t>>();
}

double Value::dateSeconds() const {
    return type() == Type::Date ? std::get<Date>(storage_).secondsSince2001 : 0;
}

const Value& Value::operator[](std::string_view key) const {
    const Dictionary& entries = dictionary();
    const auto found = entries.find(key);
    return found == entries.end() ? emptyInstance<Value>() : found->second;
}

Value Value::with(std::string_view key, Value value) const {
    Dictionary copy = dictionary();
    copy.insert_or_assign(std::string(key), std::move(value));
    return Value(std::move(copy));
}

bool Value::operator==(const Value& other) const {
    if (type() != other.type()) return false;
    switch (type()) {
        case Type::None:
            return true;
        case Type::Bool:
            return std::get<bool>(storage_) == std::get<bool>(other.storage_);
        case Type::Integer:
            return std::get<int64_t>(storage_) == std::get<int64_t>(other.storage_);
        case Type::Real:
            return std::get<double>(storage_) == std::get<double>(other.storage_);
        case Type::String:
            return std::get<std::string>(storage_) == std::get<std::string>(other.storage_);
        case Type::Data:
            return data() == other.data();
        case Type::Date:
            return dateSeconds() == other.dateSeconds();
        case Type::Array:
            return array() == other.array();
        case Type::Dictionary:
            return dictionary() == other.dictionary();
    }
    return false;
}

const char* typeName(Value::Type type) {
    static const char* const names[] = {"nothing", "boolean", "integer", "real",      "string",
                                        "data",    "date",    "array",   "dictionary"};
    return names[static_cast<int>(type)];
}

}  // namespace platform
