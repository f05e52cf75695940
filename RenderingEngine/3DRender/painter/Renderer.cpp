#include "painter/Renderer.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <utility>

#include "painter/GLPainter.h"
#include "painter/SoftwarePainter.h"
#include "platform/base/Error.h"

namespace multiscene {

namespace {

constexpr std::array<std::pair<std::string_view, Renderer>, 3> names{
    {{"auto", Renderer::Auto}, {"gl", Renderer::GL}, {"software", Renderer::Software}}};

/// A device that GL could draw on without the processor. Asking GL itself takes a tenth of a second.
bool mayHaveGpu() {
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/dri", none))
        if (entry.path().filename().string().starts_with("renderD")) return true;
    for (const char* device : {"/dev/nvidiactl", "/dev/mali0", "/dev/dxg"})
        if (std::filesystem::exists(device, none)) return true;
    return false;
}

/// The encoder takes three times as long for a picture as painting it: half of the cores are enough, and what
/// paints in their stead would only be in its way.
int painterThreads() {
    constexpr unsigned int most = 16;
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency() / 2, 1u, most));
}

}  // namespace

std::optional<Renderer> rendererNamed(std::string_view name) {
    for (const auto& [known, renderer] : names)
        if (known == name) return renderer;
    return std::nullopt;
}

std::unique_ptr<Painter> makePainter(Renderer renderer, platform::FileGate& gate,
                                     std::function<std::shared_ptr<platform::GLContext>()> makeContext) {
    if (!makeContext) makeContext = [] { return platform::GLContext::create(); };
    if (renderer == Renderer::Auto && mayHaveGpu()) {
        std::shared_ptr<platform::GLContext> context;
        try {
            context = makeContext();
        } catch (const platform::Error&) {
            // Without GL everything is drawn that does not need it.
        }
        if (context) {
            if (!context->caps().software) renderer = Renderer::GL;
            makeContext = [context] { return context; };
        }
    }
    if (renderer == Renderer::GL) return std::make_unique<GLPainter>(std::move(makeContext), gate);
    return std::make_unique<SoftwarePainter>(std::move(makeContext), gate, painterThreads());
}

}  // namespace multiscene
