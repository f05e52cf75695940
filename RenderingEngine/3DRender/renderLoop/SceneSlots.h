#pragma once

#include <array>
#include <memory>

#include "core/QVScene3D.h"
#include "playback/RenderDriver.h"

namespace multiscene {

/// The scenes that the driver holds and how they are composed. Render queue only.
struct SceneSlots {
    std::shared_ptr<QVScene3D> current, next, transition;
    /// A number that is no mode composes nothing.
    SceneRenderType mode = SceneRenderType::Single;

    std::array<std::shared_ptr<QVScene3D>*, 3> all() { return {&current, &next, &transition}; }
    /// Stops every clock, then gives the scenes up.
    void clear();
    /// Throws Error(Failed) when nothing would ever end the current scene.
    void requireRunningClock() const;
};

}  // namespace multiscene
