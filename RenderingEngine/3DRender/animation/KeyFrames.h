#pragma once

#include <vector>

#include "core/QVKeyAnimationOperators.h"
#include "tween/QVTweenItem.h"

namespace multiscene {

/// A value on its way from one end to the other.
template <typename Value>
struct Move {
    Value start{}, end{};
    int32_t ease = 0;  ///< where the way has an ease of its own

    Value at(float eased) const { return start + eased * (end - start); }
    /// By its own ease, whose Bézier curve is the target's.
    Value easedAt(float progress, const TweenTarget* target) const {
        return at(QVTweenItem::easeValueWithEase(ease, progress, target));
    }
};

/// A list of keys with what each of them shows, read when the scene is read.
template <typename Shown>
class KeyFrames {
  public:
    KeyFrames() = default;
    /// `read` makes what a key shows from its dictionary.
    template <typename Read>
    KeyFrames(const platform::Value::Array& keys, Read read) : keys_(keys) {
        for (const platform::Value& key : keys) shown_.push_back(read(key));
    }

    /// Calls `show` with what the frame's key shows and with its progress, unless the frame lies in none.
    template <typename Show>
    void updateData(int64_t frame, const TweenTarget* easeTarget, Show show) {
        if (const auto progress = keys_.updateData(frame, easeTarget)) show(shown_[progress->key], *progress);
    }

  private:
    QVKeyAnimationOperators keys_;
    std::vector<Shown> shown_;
};

}  // namespace multiscene
