#include "app/Check/KeyExample.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/base/Value.h"

namespace multiscene {

namespace {

constexpr size_t kShownKeys = 5;
constexpr int kDeepest = 1;

std::string indented(int depth) { return std::string(2 * depth, ' '); }

std::string sampleNumber(const Key& key) {
    if (!key.fallback.empty() && platform::Value(key.fallback).doubleValue() >= key.minimum)
        return std::string(key.fallback);
    return platform::Value(static_cast<int64_t>(std::isfinite(key.minimum) ? std::ceil(key.minimum) : 1))
        .stringValue();
}

std::string sampleText(const Key& key, const std::string& type) {
    if (key.name == "type" && !type.empty()) return type;
    if (!key.fallback.empty()) return std::string(key.fallback);
    if (!key.choices.empty()) return std::string(key.choices.front());
    if (key.lookup == KeyLookup::Path || key.lookup == KeyLookup::UserPath)
        return "$(currentScenePlistROOT)/res/" + std::string(key.name);
    switch (key.type) {
        case KeyType::Vector2:
            return "0,0";
        case KeyType::Vector3:
            return "0,0,0";
        case KeyType::Color:
            return "1,1,1,1";
        default:
            return std::string(key.name);
    }
}

std::vector<const Key*> shownKeys(const KeyTable& table) {
    std::vector<const Key*> shown;
    const auto take = [&](bool required) {
        for (const KeyTable* part = &table; part; part = part->base)
            for (const Key& key : part->keys) {
                const bool fits = required || (part == &table && shown.size() < kShownKeys);
                if (key.required == required && fits) shown.push_back(&key);
            }
    };
    take(true);
    take(false);
    return shown;
}

std::string dictionary(const KeyTable& table, const std::string& type, int depth, int nesting);

std::string nested(const Key& key, int depth, int nesting) {
    if (!key.children || nesting >= kDeepest) return indented(depth) + "<dict/>\n";
    return dictionary(*key.children, "", depth, nesting + 1);
}

std::string valueOf(const Key& key, const std::string& type, int depth, int nesting) {
    const std::string margin = indented(depth);
    switch (key.type) {
        case KeyType::Bool:
            return margin + (platform::Value(key.fallback).boolValue() ? "<false/>\n" : "<true/>\n");
        case KeyType::Integer:
            return margin + "<integer>" + sampleNumber(key) + "</integer>\n";
        case KeyType::Number:
            return margin + "<real>" + sampleNumber(key) + "</real>\n";
        case KeyType::Dictionary:
            return nested(key, depth, nesting);
        case KeyType::Array:
        case KeyType::Nodes:
            return margin + "<array>\n" + nested(key, depth + 1, nesting) + margin + "</array>\n";
        case KeyType::TextArray:
            return margin + "<array>\n" + indented(depth + 1) + "<string>0,0</string>\n" + margin +
                   "</array>\n";
        default:
            return margin + "<string>" + sampleText(key, type) + "</string>\n";
    }
}

std::string dictionary(const KeyTable& table, const std::string& type, int depth, int nesting) {
    std::string text = indented(depth) + "<dict>\n";
    for (const Key* key : shownKeys(table)) {
        text += indented(depth + 1) + "<key>" + std::string(key->name) + "</key>\n";
        text += valueOf(*key, type, depth + 1, nesting);
    }
    return text + indented(depth) + "</dict>\n";
}

}  // namespace

std::string exampleOf(const KeyTable& table, const std::string& type) {
    return dictionary(table, type, 0, 0);
}

}  // namespace multiscene
