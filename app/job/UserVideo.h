#pragma once

#include <cstdint>
#include <filesystem>
#include <stop_token>

#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"

namespace multiscene {

/// The longest film of a user that a template's length may come from, in seconds.
inline constexpr int kLongestUserVideo = platform::limitOf<int>("maxUserFilmSeconds");

/// A film of the user, looked at as far as the scenes need it. It is played as it is: the renderer picks the
/// picture of each frame by its time.
struct UserVideo {
    std::filesystem::path file;  ///< absolute
    int64_t frames = 0;          ///< of the video that is made, in which what was looked at is seen
    double seconds = 0;          ///< the same
    bool isWhole = true;         ///< the film does not go on after that
    double rate = 0;             ///< its own, frames a second; 0 when it does not say
};

/// Looks at `mostFrames` of a film that begins with frame `firstFrame` of the file. Throws platform::Error:
/// Input when it is no readable video, ends before that, has no picture or a gap such as damaged files have;
/// Cancelled when a stop was requested.
UserVideo judgeUserVideo(const std::filesystem::path& video, int framesPerSecond, int64_t firstFrame,
                         int64_t mostFrames, platform::FileGate& gate, const std::stop_token& stop);

}  // namespace multiscene
