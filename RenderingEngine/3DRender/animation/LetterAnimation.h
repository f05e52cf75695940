#pragma once

#include <cstdint>
#include <glm/glm.hpp>
#include <optional>
#include <vector>

#include "animation/KeyFrames.h"
#include "format/KeyTable.h"
#include "platform/font/Letters.h"

namespace multiscene {

/// One item of a "LetterAnimation".
extern const KeyTable letterAnimationKeys;

/// Where a part of a text is, beside where it stands.
struct LetterPose {
    glm::mat4 matrix{1};
    float opacity = 1;

    bool operator==(const LetterPose&) const = default;
};

/// Motions that reach the letters, words or lines of a text one after the other. A pose follows from the
/// frame alone.
class LetterAnimation {
  public:
    LetterAnimation() = default;
    explicit LetterAnimation(const platform::Value::Array& items);

    /// What has to move on its own: the smallest unit of all items; none without items.
    std::optional<platform::LetterUnit> part() const;
    /// The parts that part() has asked for.
    void setParts(const std::vector<platform::LetterPart>& parts);
    /// The pose of each part at a frame; empty without items. `easeTarget`: whose Bézier curves the eases of
    /// 30000 and above name.
    void pose(int64_t frame, const TweenTarget& easeTarget, std::vector<LetterPose>& poses) const;

  private:
    enum class Order { Forward, Backward, Middle, Ends, Shuffled };

    /// One motion.
    struct Item {
        platform::LetterUnit unit = platform::LetterUnit::Letter;
        Order order = Order::Forward;
        uint32_t seed = 0;
        int64_t sartFps = 0, endFps = 0;
        float letterFps = 0;
        std::optional<float> delayFps;
        int32_t ease = 0;
        Move<glm::vec3> translate, rotate, scale;
        Move<float> alpha;
        glm::vec2 pivot{0.5f};

        static Item read(const platform::Value& item);
        std::vector<float> turns(size_t count) const;
        float delay(float lastTurn) const;
        /// Progress at a frame, 0 to 1, of what comes `turn` delays after the first.
        float progress(int64_t frame, float turn, float delay) const;
        LetterPose at(float eased, const glm::vec2& pivotPlace) const;
    };

    /// What an item moves.
    struct Moved {
        std::vector<size_t> unitOf;     ///< of each part
        std::vector<glm::vec2> pivots;  ///< of each unit
        std::vector<float> turns;
        float delay = 0;
    };
    static Moved movedBy(const Item& item, const std::vector<platform::LetterPart>& parts,
                         platform::LetterUnit part);

    std::vector<Item> items_;   ///< larger units first: they carry the smaller ones
    std::vector<Moved> moved_;  ///< of each item
    size_t partCount_ = 0;
};

}  // namespace multiscene
