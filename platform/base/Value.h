// An immutable property-list value. Readings are lenient: a value of another type, or none at all, reads as
// zero, false or empty, so that scene files may write a number as text and leave keys out.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform {

class Value {
  public:
    using Array = std::vector<Value>;
    using Dictionary = std::map<std::string, Value, std::less<>>;
    struct Data {
        std::vector<uint8_t> bytes;
    };
    struct Date {
        double secondsSince2001 = 0;
    };

    enum class Type { None, Bool, Integer, Real, String, Data, Date, Array, Dictionary };

    Value() = default;
    Value(bool value) : storage_(value) {}
    Value(int value) : storage_(static_cast<int64_t>(value)) {}
    Value(int64_t value) : storage_(value) {}
    Value(double value) : storage_(value) {}
    Value(const char* text) : storage_(std::string(text)) {}
    Value(std::string text) : storage_(std::move(text)) {}
    Value(std::string_view text) : storage_(std::string(text)) {}
    Value(Data data) : storage_(std::make_shared<const Data>(std::move(data))) {}
    Value(Date date) : storage_(date) {}
    Value(Array array) : storage_(std::make_shared<const Array>(std::move(array))) {}
    Value(Dictionary dictionary) : storage_(std::make_shared<const Dictionary>(std::move(dictionary))) {}

    Type type() const { return static_cast<Type>(storage_.index()); }
    bool isNone() const { return type() == Type::None; }
    bool isBool() const { return type() == Type::Bool; }
    bool isString() const { return type() == Type::String; }
    bool isNumber() const { return type() == Type::Bool || type() == Type::Integer || type() == Type::Real; }
    bool isArray() const { return type() == Type::Array; }
    bool isDictionary() const { return type() == Type::Dictionary; }
    explicit operator bool() const { return !isNone(); }

    /// Numbers truncate towards zero and saturate; text gives its leading decimal digits.
    int64_t integerValue() const;
    int32_t intValue() const;  ///< integerValue() saturated to 32 bits
    double doubleValue() const;
    float floatValue() const;
    /// Numbers: not zero. Text: starts with Y, y, T, t or a non-zero number.
    bool boolValue() const;
    /// Text as it is, a number as decimal text, everything else empty.
    std::string stringValue() const;

    /// The elements, empty when this is no array / no dictionary / no data.
    const Array& array() const;
    const Dictionary& dictionary() const;
    const std::vector<uint8_t>& data() const;
    double dateSeconds() const;

    /// Dictionary look-up; a missing key, or a value that is no dictionary, gives none.
    const Value& operator[](std::string_view key) const;
    bool has(std::string_view key) const { return !(*this)[key].isNone(); }
    int64_t integer(std::string_view key) const { return (*this)[key].integerValue(); }
    int32_t int32(std::string_view key) const { return (*this)[key].intValue(); }
    float real(std::string_view key) const { return (*this)[key].floatValue(); }
    bool boolean(std::string_view key) const { return (*this)[key].boolValue(); }
    std::string string(std::string_view key) const { return (*this)[key].stringValue(); }
    const Array& array(std::string_view key) const { return (*this)[key].array(); }

    /// A copy of a dictionary with one key set.
    Value with(std::string_view key, Value value) const;

    bool operator==(const Value& other) const;

  private:
    std::variant<std::monostate, bool, int64_t, double, std::string, std::shared_ptr<const Data>, Date,
                 std::shared_ptr<const Array>, std::shared_ptr<const Dictionary>>
        storage_;
};

/// The word for a type in messages: "integer", "array", …
const char* typeName(Value::Type type);

}  // namespace platform
