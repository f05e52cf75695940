#include "3DObject/QuadObject3D/FilterList.h"

#include <algorithm>
#include <cmath>

#include "core/QVKeyAnimationOperators.h"

namespace multiscene {

using platform::Value;

static constexpr Key filterAnimationKeyList[] = {
    {.name = "number",
     .type = KeyType::Text,
     .fallback = "strength",
     .meaning = "which number of the filter moves"},
    {.name = "start", .type = KeyType::Number, .fallback = "0", .meaning = "the number at the start"},
    {.name = "end", .type = KeyType::Number, .fallback = "0", .meaning = "the number at the end"},
};
constexpr KeyTable filterAnimationKeys{
    "AnimationInfo of a filter",
    "A change of one number of a filter. Each number has a list of its own: the "
    "keys of one number follow each other.",
    &animationKeys, filterAnimationKeyList};

static constexpr Key filterKeyList[] = {
    {.name = "filter", .type = KeyType::Choice, .meaning = "what is done to the picture", .required = true},
    {.name = "strength",
     .type = KeyType::Number,
     .fallback = "1",
     .meaning = "how much of the filter shows",
     .minimum = 0,
     .maximum = 1},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the strength and of the filter's own numbers",
     .children = &filterAnimationKeys},
};
const KeyTable filterKeys{"filters", "One filter of a list.", nullptr, filterKeyList, &filterVariants};

namespace {

const Key& strengthKey() { return filterKeyList[1]; }

/// The keys that move one number.
Value::Array keysFor(std::string_view number, const Value::Array& all) {
    Value::Array keys;
    for (const Value& key : all)
        if (FilterList::movedNumber(key) == number) keys.push_back(key);
    return keys;
}

}  // namespace

std::string FilterList::movedNumber(const Value& key) {
    return KeyReader(filterAnimationKeys, key).text("number");
}

/// In its range, however far an ease goes beyond it.
float FilterList::Moving::value() const {
    const float now = number.value();
    if (std::isnan(now)) return static_cast<float>(key->minimum);
    return std::clamp(now, static_cast<float>(key->minimum), static_cast<float>(key->maximum));
}

void FilterList::read(const Value::Array& filters, const std::function<Table(const KeyReader&)>& readTable) {
    filters_.clear();
    for (const Value& info : filters) {
        const KeyReader common(filterKeys, info);
        const FilterType* type = filterTypeNamed(common.text("filter"));
        if (!type || filters_.size() == most) continue;
        const KeyReader own(*type->keys, info);
        Listed listed;
        listed.filter.type = type;
        const Value::Array& keys = common.array("AnimationInfo");
        const auto addNumber = [&](const Key& key, const KeyReader& reader) {
            Moving& moving = listed.numbers.emplace_back(Moving{&key});
            moving.number.setValue(reader.number(key.name));
            moving.number.read(keysFor(key.name, keys), filterAnimationKeys, "start", "end");
        };
        addNumber(strengthKey(), common);
        for (const Key* key : keysOf(*type, KeyType::Number)) addNumber(*key, own);
        size_t place = 0;
        for (const Key* key : keysOf(*type, KeyType::Color))
            listed.filter.colors[place++] = glm::clamp(own.vector4(key->name), 0.0f, 1.0f);
        if (type->aside == FilterAside::Table) {
            listed.filter.table = readTable(own);
            if (!listed.filter.table) continue;
        }
        filters_.push_back(std::move(listed));
    }
}

void FilterList::updateKeyFrames(int64_t frame, const TweenTarget& easeTarget) {
    frame_ = frame;
    for (Listed& listed : filters_)
        for (Moving& moving : listed.numbers) moving.number.updateData(frame, easeTarget);
}

Filter FilterList::shown(const Listed& listed, int64_t frame) {
    Filter filter = listed.filter;
    filter.strength = listed.numbers.front().value();
    for (size_t i = 1; i < listed.numbers.size(); ++i) filter.numbers[i - 1] = listed.numbers[i].value();
    if (filter.type->aside == FilterAside::Noise) filter.frame = frame;
    return filter;
}

std::shared_ptr<const FilterChain> FilterList::chain(const glm::vec2& pictureSize) const {
    auto chain = std::make_shared<FilterChain>();
    chain->pictureSize = pictureSize;
    for (const Listed& listed : filters_)
        if (listed.numbers.front().value() > 0) chain->filters.push_back(shown(listed, frame_));
    return chain->filters.empty() ? nullptr : chain;
}

void FilterList::addTraceValues(Value::Dictionary& values) const {
    Value::Array filters;
    for (const Listed& listed : filters_) {
        Value::Dictionary numbers{{"filter", Value(listed.filter.type->name)}};
        for (const Moving& moving : listed.numbers)
            numbers[std::string(moving.key->name)] = Value(static_cast<double>(moving.value()));
        filters.emplace_back(std::move(numbers));
    }
    if (!filters.empty()) values["filters"] = Value(std::move(filters));
}

}  // namespace multiscene
