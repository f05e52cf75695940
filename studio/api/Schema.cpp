#include "studio/api/Schema.h"

#include <algorithm>
#include <cmath>

namespace multiscene::studio::schema {

namespace {

/// More faults than anybody reads.
constexpr size_t kMostFaults = 20;

Value ofType(const char* type) { return Value::Dictionary{{"type", type}}; }

int64_t charactersIn(const std::string& text) {
    return std::count_if(text.begin(), text.end(),
                         [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) != 0x80; });
}

std::string numberText(const Value& number) {
    return number.type() == Value::Type::Real && number.doubleValue() != std::floor(number.doubleValue())
               ? std::to_string(number.doubleValue())
               : std::to_string(number.integerValue());
}

/// A member's name in a pointer.
std::string escaped(const std::string& name) {
    std::string text;
    for (const char byte : name) text += byte == '~' ? "~0" : byte == '/' ? "~1" : std::string(1, byte);
    return text;
}

class Check {
  public:
    std::vector<ProblemEntry> faults;

    void check(const Value& value, const Value& schema, const std::string& pointer) {
        if (schema.has("anyOf")) return checkAny(value, schema.array("anyOf"), pointer);
        const std::string type = schema.string("type");
        if (type.empty()) return;
        if (!isOf(type, value)) return fault(pointer, "should be " + wordsFor(type));
        if (type == "string") checkText(value, schema, pointer);
        if (type == "number" || type == "integer") checkNumber(value, schema, pointer);
        if (type == "array") checkList(value, schema, pointer);
        if (type == "object") checkObject(value, schema, pointer);
    }

  private:
    void fault(const std::string& pointer, const std::string& message) {
        if (faults.size() < kMostFaults) faults.push_back({pointer, "", message});
    }

    static bool isOf(const std::string& type, const Value& value) {
        if (type == "string") return value.isString();
        if (type == "boolean") return value.isBool();
        if (type == "integer") return value.type() == Value::Type::Integer;
        if (type == "number") return value.isNumber() && !value.isBool();
        if (type == "array") return value.isArray();
        if (type == "object") return value.isDictionary();
        return value.isNone();
    }

    static std::string wordsFor(const std::string& type) {
        if (type == "string") return "a text";
        if (type == "boolean") return "true or false";
        if (type == "integer") return "a whole number";
        if (type == "number") return "a number";
        if (type == "array") return "a list";
        if (type == "object") return "an object";
        return type;
    }

    /// The faults of the first that the value is of the type of, so that they say something.
    void checkAny(const Value& value, const Value::Array& schemas, const std::string& pointer) {
        std::vector<ProblemEntry> best;
        for (const Value& schema : schemas) {
            Check one;
            one.check(value, schema, pointer);
            if (one.faults.empty()) return;
            const bool isNearer = isOf(schema.string("type"), value);
            if (best.empty() || isNearer) best = std::move(one.faults);
        }
        for (const ProblemEntry& each : best) fault(each.pointer, each.message);
    }

    void checkText(const Value& value, const Value& schema, const std::string& pointer) {
        const std::string text = value.stringValue();
        if (text.find('\0') != std::string::npos) fault(pointer, "holds a NUL");
        if (schema.has("enum")) return checkWord(text, schema.array("enum"), pointer);
        if (schema.has("minLength") && charactersIn(text) < schema.integer("minLength"))
            fault(pointer, "is too short");
        if (schema.has("maxLength") && charactersIn(text) > schema.integer("maxLength"))
            fault(pointer, "has more than " + numberText(schema["maxLength"]) + " characters");
    }

    void checkWord(const std::string& text, const Value::Array& words, const std::string& pointer) {
        std::string names;
        for (const Value& word : words) {
            if (word.stringValue() == text) return;
            names += (names.empty() ? "" : ", ") + word.stringValue();
        }
        fault(pointer, "should be one of " + names);
    }

    void checkNumber(const Value& value, const Value& schema, const std::string& pointer) {
        const bool isTooSmall =
            schema.has("minimum") && value.doubleValue() < schema["minimum"].doubleValue();
        const bool isTooLarge =
            schema.has("maximum") && value.doubleValue() > schema["maximum"].doubleValue();
        if (isTooSmall) fault(pointer, "should be at least " + numberText(schema["minimum"]));
        if (isTooLarge) fault(pointer, "should be at most " + numberText(schema["maximum"]));
    }

    void checkList(const Value& value, const Value& schema, const std::string& pointer) {
        if (schema.has("maxItems") && static_cast<int64_t>(value.array().size()) > schema.integer("maxItems"))
            return fault(pointer, "has more than " + numberText(schema["maxItems"]) + " entries");
        for (size_t index = 0; index < value.array().size(); ++index)
            check(value.array()[index], schema["items"], pointer + "/" + std::to_string(index));
    }

    void checkObject(const Value& value, const Value& schema, const std::string& pointer) {
        const auto& members = value.dictionary();
        if (schema.has("maxProperties") &&
            static_cast<int64_t>(members.size()) > schema.integer("maxProperties"))
            return fault(pointer, "has more than " + numberText(schema["maxProperties"]) + " members");
        for (const Value& name : schema.array("required"))
            if (members.find(name.stringValue()) == members.end())
                fault(pointer + "/" + escaped(name.stringValue()), "is missing");
        const Value& properties = schema["properties"];
        const Value& others = schema["additionalProperties"];
        for (const auto& [name, member] : members) {
            const std::string place = pointer + "/" + escaped(name);
            if (properties.has(name))
                check(member, properties[name], place);
            else if (others.isDictionary())
                check(member, others, place);
            else
                fault(place, "is not known");
        }
    }
};

}  // namespace

Value text() { return ofType("string"); }
Value text(int64_t mostCharacters) { return text().with("maxLength", mostCharacters); }

Value word(std::initializer_list<const char*> words) {
    return text().with("enum", Value::Array(words.begin(), words.end()));
}

Value boolean() { return ofType("boolean"); }
Value integer() { return ofType("integer"); }
Value integer(int64_t least, int64_t most) { return integer().with("minimum", least).with("maximum", most); }
Value number() { return ofType("number"); }
Value number(double least, double most) { return number().with("minimum", least).with("maximum", most); }
Value time() { return text().with("format", "date-time"); }
Value address() { return text().with("format", "uri-reference"); }

Value list(Value item, int64_t most) {
    const Value schema = ofType("array").with("items", std::move(item));
    return most < 0 ? schema : schema.with("maxItems", most);
}

Value map(Value member, int64_t most) {
    const Value schema = ofType("object").with("additionalProperties", std::move(member));
    return most < 0 ? schema : schema.with("maxProperties", most);
}

Value object(Members members) {
    return extended(ofType("object").with("additionalProperties", false), members);
}

Value extended(const Value& base, Members members) {
    Value::Dictionary properties = base["properties"].dictionary();
    Value::Array required = base.array("required");
    for (const auto& [given, schema] : members) {
        std::string name = given;
        const bool isOptional = name.ends_with('?');
        if (isOptional) name.pop_back();
        properties[name] = schema;
        if (!isOptional) required.emplace_back(name);
    }
    return base.with("properties", std::move(properties)).with("required", std::move(required));
}

Value orNull(Value schema) { return either({std::move(schema), ofType("null")}); }

Value either(std::initializer_list<Value> schemas) {
    return Value::Dictionary{{"anyOf", Value::Array(schemas)}};
}

Value anything() { return Value::Dictionary{}; }

Value problem() {
    return object(
        {{"type", text()},
         {"title", text()},
         {"status", integer()},
         {"detail", text()},
         {"code", text()},
         {"errors?",
          list(object({{"pointer", text()}, {"message", text()}, {"key?", text()}, {"remedy?", text()}}))}});
}

std::vector<ProblemEntry> faultsIn(const Value& value, const Value& schema, const std::string& pointer) {
    Check check;
    check.check(value, schema, pointer);
    return std::move(check.faults);
}

}  // namespace multiscene::studio::schema
