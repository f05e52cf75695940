#include "app/check/KeyJudge.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <set>

#include "app/check/Suggestion.h"
#include "platform/base/Trim.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

using platform::Value;

namespace {

std::string quoted(std::string_view text) {
    constexpr size_t longest = 60;
    return "\"" + std::string(text.substr(0, longest)) + (text.size() > longest ? "…" : "") + "\"";
}

std::vector<std::string> pieces(std::string_view text) {
    std::vector<std::string> result;
    for (size_t comma; (comma = text.find(',')) != std::string_view::npos; text.remove_prefix(comma + 1))
        result.emplace_back(text.substr(0, comma));
    result.emplace_back(text);
    return result;
}

bool isBoolText(std::string_view text) {
    static constexpr std::string_view words[] = {"yes", "no", "true", "false", "YES", "NO", "0", "1"};
    for (const std::string_view candidate : words)
        if (text == candidate) return true;
    return false;
}

bool takesUserValue(const Key& key) {
    return key.lookup == KeyLookup::UserMap || key.lookup == KeyLookup::UserPath;
}

bool isNumber(const Key& key, const Value& value) {
    return value.isNumber() ||
           (value.isString() && (takesUserValue(key) || isNumberText(value.stringValue())));
}

bool isVector(const Value& value, size_t components) {
    if (!value.isString()) return false;
    const std::vector<std::string> parts = pieces(value.stringValue());
    return parts.size() == components && std::all_of(parts.begin(), parts.end(), isNumberText);
}

bool fits(const Key& key, const Value& value) {
    switch (key.type) {
        case KeyType::Bool:
            return value.isNumber() || (value.isString() && isBoolText(value.stringValue()));
        case KeyType::Integer:
        case KeyType::Number:
            return isNumber(key, value);
        case KeyType::Text:
            return value.isString() || (value.isNumber() && key.lookup != KeyLookup::Path);
        case KeyType::Choice:
            return value.isString() || value.isNumber();
        case KeyType::Vector2:
            return isVector(value, 2);
        case KeyType::Vector3:
            return isVector(value, 3);
        case KeyType::Color:
            return isVector(value, 4);
        case KeyType::Dictionary:
            return value.isDictionary();
        case KeyType::Array:
        case KeyType::TextArray:
            return value.isArray();
    }
    return false;
}

std::string shown(const Value& value) {
    if (value.isString() || value.isNumber()) return quoted(value.stringValue());
    return value.isArray() ? "an array" : "a " + std::string(typeName(value.type()));
}

std::string numberText(double number) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.10g", number);
    return buffer;
}

/// The dictionary among some keys in which a key that is unknown here would be right.
const Key* rightPlace(const KeySet& keys, const std::string& name) {
    for (const KeyTable* part : keys.tables())
        for (const Key& key : part->keys)
            if (key.type == KeyType::Dictionary && key.children && key.children->find(name)) return &key;
    return nullptr;
}

std::string listOf(const std::vector<std::string_view>& names) {
    std::string list;
    for (const std::string_view name : names)
        list += (list.empty() ? "\"" : ", \"") + std::string(name) + "\"";
    return list;
}

/// What to write instead of a word that is none of the known ones.
std::string remedyOfUnknown(const std::string& word, const std::vector<std::string_view>& known) {
    const std::string meant = didYouMean(word, known);
    return meant.empty() ? "known are " + listOf(known) : meant;
}

bool isMissing(const Key& key, const Value& content, const KeySet& keys) {
    const bool isText = key.type == KeyType::Text || key.type == KeyType::Choice;
    if (isText ? content[key.name] != Value("") && content.has(key.name) : content.has(key.name))
        return false;
    for (const KeyTable* part : keys.tables())
        for (const Key& other : part->keys)
            if (other.standsFor == key.name && content.has(other.name)) return false;
    return true;
}

}  // namespace

bool isNumberText(std::string_view text) {
    text = platform::trimmed(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isWhole && std::isfinite(number);  // "nan" and "inf" are words
}

std::string rangeText(const Key& key) {
    const bool hasMinimum = std::isfinite(key.minimum), hasMaximum = std::isfinite(key.maximum);
    if (hasMinimum && hasMaximum) return "from " + numberText(key.minimum) + " to " + numberText(key.maximum);
    if (hasMinimum) return "at least " + numberText(key.minimum);
    return hasMaximum ? "at most " + numberText(key.maximum) : std::string();
}

std::string typeText(KeyType type) {
    switch (type) {
        case KeyType::Bool:
            return "true or false";
        case KeyType::Integer:
            return "a whole number";
        case KeyType::Number:
            return "a number";
        case KeyType::Text:
            return "text";
        case KeyType::Vector2:
            return "text of 2 numbers \"a,b\"";
        case KeyType::Vector3:
            return "text of 3 numbers \"a,b,c\"";
        case KeyType::Color:
            return "text of 4 numbers from 0 to 1 \"red,green,blue,alpha\"";
        case KeyType::Choice:
            return "one of some words";
        case KeyType::Dictionary:
            return "a dictionary";
        case KeyType::Array:
            return "an array of dictionaries";
        case KeyType::TextArray:
            return "an array of texts";
            return "an array of node dictionaries";
    }
    return "";
}

void KeyJudge::add(Severity severity, const std::string& keyPath, std::string message, std::string remedy) {
    findings_.push_back({severity, file_, keyPath, std::move(message), std::move(remedy)});
}

void KeyJudge::dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) {
    std::set<std::string_view> missingSwitches;
    for (const KeyTable* part : keys.tables())
        for (const Key& key : part->keys) {
            const std::string name(key.name);
            if (key.required && isMissing(key, content, keys))
                add(Severity::Error, keyPath, "\"" + name + "\" is missing",
                    "add it: " + std::string(key.meaning));
            if (!content.has(name)) continue;
            if (!key.standsFor.empty() && !keys.find(key.standsFor))
                add(Severity::Warning, keyPath + "." + name, "has no effect here", "remove it");
            // One finding for all that a switch keeps off.
            if (!key.onlyWith.empty() && !content.boolean(key.onlyWith) &&
                missingSwitches.insert(key.onlyWith).second)
                add(Severity::Warning, keyPath + "." + name,
                    "has no effect without \"" + std::string(key.onlyWith) + "\"",
                    "set that to true, or remove it");
        }
}

void KeyJudge::known(const Key& key, const Value& value, const std::string& keyPath) {
    if (!fits(key, value)) {
        add(Severity::Error, keyPath, "is " + shown(value) + ", not " + typeText(key.type));
        return;
    }
    switch (key.type) {
        case KeyType::Integer:
        case KeyType::Number:
            judgeNumber(key, value, keyPath);
            break;
        case KeyType::Vector2:
        case KeyType::Vector3:
        case KeyType::Color:
            judgeComponents(key, value.stringValue(), keyPath);
            break;
        case KeyType::Array:
        case KeyType::TextArray:
            judgeElements(key, value.array(), keyPath);
            break;
        case KeyType::Choice:
            judgeChoice(key, value.stringValue(), keyPath);
            break;
        default:
            break;
    }
}

void KeyJudge::judgeNumber(const Key& key, const Value& value, const std::string& keyPath) {
    if (value.isString() && !isNumberText(value.stringValue())) return;  // names a value of the user
    const double number = value.doubleValue();
    judgeRange(key, number, keyPath);
    if (!key.choices.empty()) judgeChoice(key, value.stringValue(), keyPath);
    if (key.type == KeyType::Integer && number != std::trunc(number))
        add(Severity::Warning, keyPath, "is " + shown(value) + ", and only the whole number counts",
            "write " + numberText(std::trunc(number)));
}

void KeyJudge::judgeChoice(const Key& key, const std::string& chosen, const std::string& keyPath) {
    const std::vector<std::string_view> choices(key.choices.begin(), key.choices.end());
    if (choices.empty() || std::find(choices.begin(), choices.end(), chosen) != choices.end()) return;
    add(Severity::Error, keyPath, "is " + quoted(chosen) + ", which means nothing here",
        remedyOfUnknown(chosen, choices));
}

bool KeyJudge::judgeRange(const Key& key, double number, const std::string& keyPath) {
    if (number >= key.minimum && number <= key.maximum) return true;
    add(Severity::Error, keyPath, "is " + numberText(number) + ", out of range",
        "it takes " + rangeText(key));
    return false;
}

/// The first component out of range speaks for the others.
void KeyJudge::judgeComponents(const Key& key, const std::string& text, const std::string& keyPath) {
    Key component = key;
    if (key.type == KeyType::Color) component.minimum = 0, component.maximum = 1;
    for (const std::string& piece : pieces(text))
        if (!judgeRange(component, Value(piece).doubleValue(), keyPath)) return;
}

void KeyJudge::judgeElements(const Key& key, const Value::Array& elements, const std::string& keyPath) {
    const bool wantsText = key.type == KeyType::TextArray;
    if (wantsText) judgeRange(key, static_cast<double>(elements.size()), keyPath);
    for (size_t index = 0; index < elements.size(); ++index)
        if (wantsText ? !elements[index].isString() : !elements[index].isDictionary())
            add(Severity::Error, keyPath + "[" + std::to_string(index) + "]",
                "is " + shown(elements[index]) + ", not " + (wantsText ? "text" : "a dictionary"));
}

bool KeyJudge::judgeOtherTypes(const KeySet& keys, const std::string& name, const std::string& keyPath) {
    for (auto choice = keys.choices().rbegin(); choice != keys.choices().rend(); ++choice) {
        const auto readers = keys.readersOf(name, *choice);
        if (readers.empty()) continue;
        add(Severity::Warning, keyPath,
            "has no effect where \"" + std::string(choice->variants->key) + "\" is " + quoted(choice->name),
            "remove it: it belongs to " + listOf(readers));
        return true;
    }
    return false;
}

void KeyJudge::unknown(const KeySet& keys, const std::string& name, const Value& value,
                       const std::string& keyPath) {
    // An entry of a scene group repeats its identifier as a key of that name.
    if (keys.has(sceneEntryKeys) && value == Value(name)) return;
    if (judgeOtherTypes(keys, name, keyPath)) return;
    std::string remedy = didYouMean(name, keys.names());
    if (const Key* place = rightPlace(keys, name))
        remedy = "it belongs into \"" + std::string(place->name) + "\"";
    if (remedy.empty()) remedy = "nothing reads it: remove it";
    add(Severity::Error, keyPath, "unknown key of " + std::string(keys.tables().front()->owner), remedy);
}

void KeyJudge::unknownType(const KeySet& keys, const Value& content, const std::string& keyPath) {
    const auto& [variants, name] = keys.choices().back();
    const std::string key(variants->key), kind(variants->kind);
    const auto types = variants->names();
    if (!content.has(key) || content[key] == Value(""))
        add(Severity::Error, keyPath, "\"" + key + "\" is missing",
            "add the " + kind + " type: " + listOf(types));
    else
        add(Severity::Error, keyPath + "." + key, "unknown " + kind + " type " + quoted(name),
            remedyOfUnknown(name, types));
}

}  // namespace multiscene
