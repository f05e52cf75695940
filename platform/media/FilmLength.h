// How long a film really is: its packets are walked through, without decoding them.
#pragma once

#include <cstdint>
#include <stop_token>
#include <string>

#include "platform/base/CMTime.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Limits.h"

namespace platform {

/// The longest time that one picture may stand, in seconds.
inline constexpr int kLongestPicture = limitOf<int>("maxPictureSeconds");

struct FilmLength {
    /// From the first picture to the end of the last one that was looked at.
    CMTime length;
    bool isWhole = true;  ///< the end of the film was reached
};

/// Looks at the first `mostSeconds` of a film. `name` and `kind` go into the error. Throws Error(kind) when
/// it is no readable video, or has a picture that stands longer than kLongestPicture, as damaged files have;
/// Error(Cancelled).
FilmLength measureFilm(const FileHandle& file, const std::string& name, ErrorKind kind, double mostSeconds,
                       const std::stop_token& stop = {});

/// Frames of a fixed rate in which a film of this length is seen, at least one.
int64_t framesWithin(const CMTime& length, int framesPerSecond);

}  // namespace platform
