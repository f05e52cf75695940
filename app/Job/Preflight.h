#pragma once

#include "app/Job/Playable.h"

namespace multiscene {

/// Judges the files that the scenes name before anything is rendered. Throws platform::Error(Template),
/// naming scene file and key, for a file outside the fence or no regular file, and for what a scene cannot
/// play without: the video of a clock, the description of a shader of its own, and any video that is there
/// but is none. Other missing files only leave their node undrawn.
void requireUsableFiles(const Playable& playable);

}  // namespace multiscene
