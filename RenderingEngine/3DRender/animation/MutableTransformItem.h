#pragma once

#include <glm/glm.hpp>
#include <optional>

#include "animation/KeyFrames.h"

namespace multiscene {

/// One motion of a "MutableTransformArray": evaluated from the frame number alone, nothing is kept between
/// frames.
struct MutableTransformItem {
    enum class Type : int64_t { Translate = 0, Scale = 1, Rotate = 2 };

    /// None for a "transformType" that there is not.
    static std::optional<MutableTransformItem> read(const platform::Value& item);

    /// The item applied to a matrix; outside the item's frames the matrix comes back unchanged.
    glm::mat4 appliedTo(const glm::mat4& matrix, int32_t frame, const TweenTarget& target) const;

    Type type = Type::Translate;
    int64_t fpsStart = 0, fpsEnd = 0;
    Move<glm::vec3> move;  ///< rotations in degrees
};

}  // namespace multiscene
