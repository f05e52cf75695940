#pragma once

#include <glm/glm.hpp>
#include <optional>

#include "platform/base/Value.h"
#include "tween/QVTextureTranformItem.h"

namespace multiscene {

/// One motion of a "TransformArray".
struct TransformItem {
    struct Channel {
        std::optional<glm::vec3> start;  ///< none: where the node is when the item is loaded
        std::optional<glm::vec3> end;    ///< none: the channel stands still
        int32_t ease = 0;
    };
    struct Texture {
        TextureWindow from, to;
    };

    static TransformItem read(const platform::Value& item);

    int64_t sartFps = 0, endFps = 0;
    Channel translate, scale, rotate;
    std::optional<Texture> texture;  ///< none: it stands still
};

}  // namespace multiscene
