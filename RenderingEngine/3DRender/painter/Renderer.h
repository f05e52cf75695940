// Which painter draws a video.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "painter/Painter.h"
#include "platform/base/FileGate.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

enum class Renderer {
    Auto,      ///< GL where a GPU draws, else software
    GL,        ///< GL alone, whatever draws
    Software,  ///< the processor, with GL for what only GL can draw
};

/// "auto", "gl", "software"; nothing for any other word.
std::optional<Renderer> rendererNamed(std::string_view name);

/// The gate outlives the painter. `makeContext`: none makes an off-screen one. Throws Error(Failed) when
/// there is no GL where it is asked for.
std::unique_ptr<Painter> makePainter(Renderer renderer, platform::FileGate& gate,
                                     std::function<std::shared_ptr<platform::GLContext>()> makeContext = {});

}  // namespace multiscene
