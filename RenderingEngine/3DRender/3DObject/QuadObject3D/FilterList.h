#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "animation/AnimatedNumber.h"
#include "pictureFilter/Filter.h"
#include "platform/base/Limits.h"
#include "platform/base/Value.h"

namespace multiscene {

/// The keys of one filter of a list.
extern const KeyTable filterKeys;

/// The filters of a node, as its scene file lists them, and their numbers, which key frames move. Render
/// queue.
class FilterList {
  public:
    /// More filters than this are not applied.
    static constexpr size_t most = platform::limitOf<size_t>("maxFilters");
    using Table = std::shared_ptr<const platform::ColorTable>;

    /// `readTable` gives the table that a filter's dictionary names, or none.
    void read(const platform::Value::Array& filters, const std::function<Table(const KeyReader&)>& readTable);
    /// Moves the numbers on to a frame.
    void updateKeyFrames(int64_t frame, const TweenTarget& easeTarget);
    /// What is applied in that frame; none when nothing is.
    std::shared_ptr<const FilterChain> chain(const glm::vec2& pictureSize) const;
    /// Which number a key of "AnimationInfo" moves.
    static std::string movedNumber(const platform::Value& key);
    void addTraceValues(platform::Value::Dictionary& values) const;

  private:
    struct Moving {
        const Key* key;  ///< what it is, and its range
        AnimatedNumber number{0};

        float value() const;
    };
    struct Listed {
        Filter filter;
        std::vector<Moving> numbers;  ///< the strength first
    };

    static Filter shown(const Listed& listed, int64_t frame);

    std::vector<Listed> filters_;
    int64_t frame_ = 0;
};

}  // namespace multiscene
