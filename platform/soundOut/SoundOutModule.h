// What the module behind openSoundOut() offers. For the files of this folder.
#pragma once

#include <string>

#include "platform/soundOut/SoundOut.h"

namespace platform {

/// None, and why, when there is no device. Throws nothing.
using MakeSoundOut = SoundOut*(int rate, const SoundOut::Source& source, std::string& failure);
inline constexpr const char* kMakeSoundOut = "multisceneMakeSoundOut";

}  // namespace platform
