#include "platform/window/Window.h"

#include "platform/base/Error.h"
#include "platform/base/Module.h"
#include "platform/window/WindowModule.h"

namespace platform {

std::unique_ptr<Window> openWindow(const WindowSettings& settings) {
    auto* const make = reinterpret_cast<MakeWindow*>(moduleFunction("multiscene_window", kMakeWindow));
    std::string failure;
    std::unique_ptr<Window> window(make(settings, failure));
    if (!window) throw Error(ErrorKind::Failed, "no window can be opened: " + failure);
    return window;
}

}  // namespace platform
