#include "animation/LetterAnimation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/gtc/matrix_transform.hpp>
#include <numeric>
#include <utility>

#include "format/Angles.h"

namespace multiscene {

using platform::LetterPart;
using platform::LetterUnit;

static constexpr std::string_view unitNames[] = {"letter", "word", "line"};
static constexpr std::string_view orderNames[] = {"forward", "backward", "middle", "ends", "shuffled"};

static constexpr Key letterAnimationKeyList[] = {
    {.name = "letterUnit",
     .type = KeyType::Choice,
     .fallback = "letter",
     .meaning =
         "what moves on its own. A letter is what its script takes for one: joined letters, a conjunct "
         "and an emoji move as a whole; a word of Chinese or Japanese is a character",
     .choices = unitNames},
    {.name = "letterOrder",
     .type = KeyType::Choice,
     .fallback = "forward",
     .meaning = "who comes first: the first that is read, the last, those in the middle, those at both ends, "
                "or any, by \"shuffleSeed\"",
     .choices = orderNames},
    {.name = "shuffleSeed",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "another number, another shuffled order",
     .minimum = 0,
     .maximum = 1'000'000},
    {.name = "sartFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "the first one starts; before, all are as at the start",
     .minimum = 0},
    {.name = "endFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "the last one has arrived, however long the text is; afterwards all are as at the end",
     .required = true,
     .minimum = 0},
    {.name = "letterFps",
     .type = KeyType::Number,
     .unit = "frames",
     .fallback = "12",
     .meaning = "how long each one moves; the item's length at most",
     .minimum = 0,
     .maximum = 100'000},
    {.name = "delayFps",
     .type = KeyType::Number,
     .unit = "frames",
     .meaning =
         "from one to the next, at most: a long text has less, so that it is done by \"endFps\"; none: "
         "they are spread over all the frames",
     .minimum = 0,
     .maximum = 100'000},
    {.name = "ease", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
    {.name = "startTranslate",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "offset at the start"},
    {.name = "endTranslate",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "offset at the end"},
    {.name = "startRotate",
     .type = KeyType::Vector3,
     .unit = "degrees",
     .fallback = "0,0,0",
     .meaning = "rotation at the start"},
    {.name = "endRotate",
     .type = KeyType::Vector3,
     .unit = "degrees",
     .fallback = "0,0,0",
     .meaning = "rotation at the end"},
    {.name = "startScale", .type = KeyType::Vector3, .fallback = "1,1,1", .meaning = "scale at the start"},
    {.name = "endScale", .type = KeyType::Vector3, .fallback = "1,1,1", .meaning = "scale at the end"},
    {.name = "startRenderAlpha",
     .type = KeyType::Number,
     .fallback = "1",
     .meaning = "opacity at the start",
     .minimum = 0,
     .maximum = 1},
    {.name = "endRenderAlpha",
     .type = KeyType::Number,
     .fallback = "1",
     .meaning = "opacity at the end",
     .minimum = 0,
     .maximum = 1},
    {.name = "pivot",
     .type = KeyType::Vector2,
     .fallback = "0.5,0.5",
     .meaning =
         "around what it turns and grows: 0,0 is the lower left corner of the letter, word or line, 1,1 "
         "the upper right one",
     .minimum = -100,
     .maximum = 100},
};
const KeyTable letterAnimationKeys{"LetterAnimation",
                                   "A motion that reaches the letters, words or lines of a text one after "
                                   "the other. Several add up; larger units carry the smaller ones.",
                                   nullptr, letterAnimationKeyList};

namespace {

/// The place of a word in a list; the first for one that is not in it.
template <typename Choice, size_t count>
Choice chosen(const std::string_view (&names)[count], const std::string& name) {
    const auto found = std::ranges::find(names, name);
    return found == std::end(names) ? Choice{} : static_cast<Choice>(found - std::begin(names));
}

/// What no number is stands for nothing.
glm::vec3 finite(glm::vec3 vector) {
    for (int i = 0; i < 3; ++i)
        if (!std::isfinite(vector[i])) vector[i] = 0;
    return vector;
}

float within(float number, float least, float most) {
    return std::isfinite(number) ? std::clamp(number, least, most) : least;
}

Move<glm::vec3> readMove(const KeyReader& reader, const char* start, const char* end) {
    return {finite(reader.vector3(start)), finite(reader.vector3(end))};
}

/// The same everywhere, as the standard library's shuffling is not.
std::vector<float> shuffled(size_t count, uint32_t seed) {
    std::vector<float> turns(count);
    std::iota(turns.begin(), turns.end(), 0.0f);
    uint64_t state = seed;
    const auto random = [&state] {
        state += 0x9E3779B97F4A7C15;
        uint64_t mixed = (state ^ state >> 30) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ mixed >> 27) * 0x94D049BB133111EB;
        return mixed ^ mixed >> 31;
    };
    for (size_t left = count; left > 1; --left) std::swap(turns[left - 1], turns[random() % left]);
    return turns;
}

/// Which letter, word or line each part belongs to.
std::vector<size_t> unitsOf(const std::vector<LetterPart>& parts, LetterUnit unit, LetterUnit part) {
    std::vector<size_t> units(parts.size());
    for (size_t i = 0; i < parts.size(); ++i)
        units[i] = unit == part ? i : unit == LetterUnit::Word ? parts[i].word : parts[i].line;
    return units;
}

LetterPart around(const LetterPart& a, const LetterPart& b) {
    return {.left = std::min(a.left, b.left),
            .right = std::max(a.right, b.right),
            .bottom = std::min(a.bottom, b.bottom),
            .top = std::max(a.top, b.top)};
}

}  // namespace

LetterAnimation::Item LetterAnimation::Item::read(const platform::Value& item) {
    const KeyReader reader(letterAnimationKeys, item);
    constexpr float most = 100'000;
    const glm::vec2 pivot = reader.vector2("pivot");
    Item read{.unit = chosen<LetterUnit>(unitNames, reader.text("letterUnit")),
              .order = chosen<Order>(orderNames, reader.text("letterOrder")),
              .seed = static_cast<uint32_t>(reader.int32("shuffleSeed")),
              .sartFps = reader.integer("sartFps"),
              .endFps = reader.integer("endFps"),
              .letterFps = within(reader.number("letterFps"), 0, most),
              .delayFps = std::nullopt,
              .ease = reader.int32("ease"),
              .translate = readMove(reader, "startTranslate", "endTranslate"),
              .rotate = readMove(reader, "startRotate", "endRotate"),
              .scale = readMove(reader, "startScale", "endScale"),
              .alpha = {within(reader.number("startRenderAlpha"), 0, 1),
                        within(reader.number("endRenderAlpha"), 0, 1)},
              .pivot = {within(pivot.x, -100, 100), within(pivot.y, -100, 100)}};
    if (reader.has("delayFps")) read.delayFps = within(reader.number("delayFps"), 0, most);
    return read;
}

/// After how many delays each one starts.
std::vector<float> LetterAnimation::Item::turns(size_t count) const {
    if (order == Order::Shuffled) return shuffled(count, seed);
    const auto last = static_cast<float>(count) - 1;
    std::vector<float> turns(count);
    for (size_t i = 0; i < count; ++i) {
        const auto place = static_cast<float>(i), fromMiddle = std::abs(place - last / 2);
        turns[i] = order == Order::Forward    ? place
                   : order == Order::Backward ? last - place
                   : order == Order::Middle   ? std::floor(fromMiddle)
                                              : std::floor(last / 2) - std::floor(fromMiddle);
    }
    return turns;
}

float LetterAnimation::Item::delay(float lastTurn) const {
    if (lastTurn <= 0) return 0;
    const auto length = static_cast<float>(std::max<int64_t>(endFps - sartFps, 0));
    const float spread = std::max(length - letterFps, 0.0f) / lastTurn;
    return delayFps ? std::min(*delayFps, spread) : spread;
}

float LetterAnimation::Item::progress(int64_t frame, float turn, float delay) const {
    const auto length = static_cast<float>(std::max<int64_t>(endFps - sartFps, 0));
    const float since =
        static_cast<float>(static_cast<double>(frame) - static_cast<double>(sartFps)) - turn * delay;
    const float moves = std::min(letterFps, length);
    return moves > 0 ? std::clamp(since / moves, 0.0f, 1.0f) : since >= 0 ? 1.0f : 0.0f;
}

LetterPose LetterAnimation::Item::at(float eased, const glm::vec2& pivotPlace) const {
    const glm::vec3 around(pivotPlace, 0), degrees = rotate.at(eased);
    glm::mat4 matrix = glm::translate(glm::mat4(1), translate.at(eased) + around);
    matrix = glm::rotate(matrix, toRadians(degrees.x), glm::vec3(1, 0, 0));
    matrix = glm::rotate(matrix, toRadians(degrees.y), glm::vec3(0, 1, 0));
    matrix = glm::rotate(matrix, toRadians(degrees.z), glm::vec3(0, 0, 1));
    matrix = glm::translate(glm::scale(matrix, scale.at(eased)), -around);
    return {matrix, std::clamp(alpha.at(eased), 0.0f, 1.0f)};
}

LetterAnimation::LetterAnimation(const platform::Value::Array& items) {
    for (const platform::Value& item : items) items_.push_back(Item::read(item));
    std::ranges::stable_sort(items_, std::ranges::greater(), &Item::unit);
}

std::optional<LetterUnit> LetterAnimation::part() const {
    if (items_.empty()) return std::nullopt;
    return items_.back().unit;
}

LetterAnimation::Moved LetterAnimation::movedBy(const Item& item, const std::vector<LetterPart>& parts,
                                                LetterUnit part) {
    Moved moved;
    moved.unitOf = unitsOf(parts, item.unit, part);
    const size_t count = parts.empty() ? 0 : 1 + *std::ranges::max_element(moved.unitOf);
    std::vector<std::optional<LetterPart>> boxes(count);
    for (size_t i = 0; i < parts.size(); ++i) {
        std::optional<LetterPart>& box = boxes[moved.unitOf[i]];
        box = box ? around(*box, parts[i]) : parts[i];
    }
    for (const auto& box : boxes) {
        const LetterPart& at = box ? *box : parts.front();
        moved.pivots.push_back(glm::vec2(at.left, at.bottom) +
                               item.pivot * glm::vec2(at.right - at.left, at.top - at.bottom));
    }
    moved.turns = item.turns(count);
    moved.delay = item.delay(count > 0 ? *std::ranges::max_element(moved.turns) : 0);
    return moved;
}

void LetterAnimation::setParts(const std::vector<LetterPart>& parts) {
    partCount_ = parts.size();
    moved_.clear();
    for (const Item& item : items_) moved_.push_back(movedBy(item, parts, items_.back().unit));
}

void LetterAnimation::pose(int64_t frame, const TweenTarget& easeTarget,
                           std::vector<LetterPose>& poses) const {
    poses.assign(items_.empty() ? 0 : partCount_, {});
    for (size_t i = 0; i < moved_.size(); ++i) {
        const Item& item = items_[i];
        const Moved& moved = moved_[i];
        std::vector<LetterPose> units;
        for (size_t unit = 0; unit < moved.pivots.size(); ++unit) {
            const float progress = item.progress(frame, moved.turns[unit], moved.delay);
            units.push_back(item.at(QVTweenItem::easeValueWithEase(item.ease, progress, &easeTarget),
                                    moved.pivots[unit]));
        }
        for (size_t part = 0; part < poses.size(); ++part) {
            poses[part].matrix *= units[moved.unitOf[part]].matrix;
            poses[part].opacity *= units[moved.unitOf[part]].opacity;
        }
    }
}

}  // namespace multiscene
