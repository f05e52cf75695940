// What the module behind openWindow() offers. For the files of this folder.
#pragma once

#include <string>

#include "platform/window/Window.h"

namespace platform {

/// None, and why, when there is no screen. Throws nothing.
using MakeWindow = Window*(const WindowSettings& settings, std::string& failure);
inline constexpr const char* kMakeWindow = "multisceneMakeWindow";

}  // namespace platform
