#include "format/KeySet.h"

#include <algorithm>

namespace multiscene {

namespace {

std::string chosenName(const KeyTable& table, const platform::Value& dictionary) {
    const std::string_view key = table.variants->key;
    const Key* description = table.find(key);
    const platform::Value& given = dictionary[key];
    const platform::Value value =
        given.isNone() && description ? platform::Value(description->fallback) : given;
    const bool isNumber = description && description->type == KeyType::Integer;
    return isNumber ? std::to_string(value.integerValue()) : value.stringValue();
}

/// Whether a table, one of its bases or one of its variants lists a key.
bool reads(const KeyTable& table, std::string_view key) {
    if (table.find(key)) return true;
    if (!table.variants) return false;
    return std::ranges::any_of(table.variants->names(), [&](std::string_view name) {
        return reads(*table.variants->find(name), key);
    });
}

}  // namespace

KeySet::KeySet(const KeyTable& table, const platform::Value& dictionary) {
    std::vector<const KeyTable*> chosen{&table};
    while (const KeyVariants* variants = chosen.back()->variants) {
        choices_.push_back({variants, chosenName(*chosen.back(), dictionary)});
        const KeyTable* next = variants->find(choices_.back().name);
        isUndecided_ = !next;
        if (isUndecided_) break;
        chosen.push_back(next);
    }
    for (auto each = chosen.rbegin(); each != chosen.rend(); ++each) add(**each);
}

void KeySet::add(const KeyTable& table) {
    for (const KeyTable* part = &table; part; part = part->base)
        if (!has(*part)) tables_.push_back(part);
}

bool KeySet::has(const KeyTable& table) const { return std::ranges::find(tables_, &table) != tables_.end(); }

const Key* KeySet::find(std::string_view name) const {
    for (const KeyTable* table : tables_)
        for (const Key& key : table->keys)
            if (key.name == name) return &key;
    return nullptr;
}

KeyFile KeySet::fileOf(const Key& key) const {
    const Key* meant = key.standsFor.empty() ? nullptr : find(key.standsFor);
    return meant ? meant->file : key.file;
}

std::vector<std::string_view> KeySet::names() const {
    std::vector<std::string_view> names;
    for (const KeyTable* table : tables_)
        for (const Key& key : table->keys) names.push_back(key.name);
    return names;
}

std::vector<std::string_view> KeySet::readersOf(std::string_view key, const Choice& choice) const {
    std::vector<std::string_view> readers;
    for (const std::string_view name : choice.variants->names())
        if (reads(*choice.variants->find(name), key)) readers.push_back(name);
    return readers;
}

}  // namespace multiscene
