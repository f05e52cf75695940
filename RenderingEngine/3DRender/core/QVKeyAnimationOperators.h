#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "format/KeyTable.h"
#include "tween/TweenTarget.h"

namespace multiscene {

/// "sartFps", "endFps", "ease": what every key of an "AnimationInfo" list has besides its payload.
extern const KeyTable animationKeys;

/// Where a frame lies in a list of keys.
struct KeyProgress {
    size_t key;    ///< its number in the list
    float eased;   ///< by the key's own ease
    float linear;  ///< 0 on its first frame, 1 on its last
};

/// Walks a list of keys, read once, by frame number. The last frame of a key is delivered, with progress 1,
/// before the next key is loaded; a key that starts on that very frame is not delivered on it. Render queue
/// only.
class QVKeyAnimationOperators {
  public:
    /// Keys that never deliver.
    QVKeyAnimationOperators() = default;
    explicit QVKeyAnimationOperators(const platform::Value::Array& animationArray);

    /// The key that the frame falls into, none outside its frames. `easeTarget`: whose Bézier curves the
    /// eases of 30000 and above name; null when there is none.
    std::optional<KeyProgress> updateData(int64_t frame, const TweenTarget* easeTarget);

  private:
    struct Key {
        int64_t sartFps = 0, endFps = -1;
        int32_t ease = 0;
    };

    std::vector<Key> keys_;
    size_t loaded_ = 0;  // stays at the last one
};

}  // namespace multiscene
