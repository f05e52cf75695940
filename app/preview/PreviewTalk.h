// What the window of a preview and the worker that draws it say to each other. Numbers are decimal.
#pragma once

#include <cstddef>

namespace multiscene::previewTalk {

/// The window asks (Message::Kind::Request):
inline constexpr const char* kOpen = "open";        ///< read everything again
inline constexpr const char* kPicture = "picture";  ///< serial, frame, slot
inline constexpr const char* kSound = "sound";      ///< first sample frame, how many
inline constexpr const char* kClose = "close";

/// The worker tells (Message::Kind::Answer):
/// name, width, height, frames a second, frames, findings, a line each; with the memory of the slots
inline constexpr const char* kOpened = "opened";
inline constexpr const char* kRefused = "refused";  ///< what is wrong, a line each
/// serial, frame, 1 when the picture lies in its slot, frames, then where the time went in milliseconds: all,
/// decode, update, draw, paint
inline constexpr const char* kShown = "shown";
inline constexpr const char* kHeard = "heard";  ///< first sample frame, interleaved stereo floats

/// Pictures in the shared memory, one after the other.
inline constexpr int kSlots = 6;
/// Sample frames that a message holds at most.
inline constexpr int kMostSoundFrames = 2048;

inline size_t bytesOfPicture(int width, int height) {
    return static_cast<size_t>(width) * static_cast<size_t>(height) * 4;
}

}  // namespace multiscene::previewTalk
