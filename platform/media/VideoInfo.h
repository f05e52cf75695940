// What a video file says about itself, and a probe that reads it without decoding the film.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/CMTime.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"

namespace platform {

struct VideoInfo {
    /// Upright: after the file's rotation. Of a film whose pixels are not square, as many square ones as are
    /// as wide; its pictures have as many pixels as are stored.
    int width = 0, height = 0;
    /// From time 0 to the end of the last picture; a first picture stamped later than 0 counts. 0 when
    /// unknown.
    CMTime duration{0, 1, 1, 0};
    double averageFrameRate = 0;  ///< frames a second, 0 when unknown
    int64_t frameCount = 0;       ///< 0 when the file does not say
    bool hasAudio = false;
    bool hasAlpha = false;  ///< its pictures may be transparent in places
    std::string codec;      ///< short name: "h264", "vp9", …

    double durationSeconds() const { return CMTimeGetSeconds(duration); }
    /// The duration in 1/600 s, rounded down.
    int64_t durationTicks() const;
};

/// Reads the header of a video file. `name` and `kind` go into the error. Throws Error(kind) when it is no
/// video that VideoReader would read.
VideoInfo probeVideo(const FileHandle& file, const std::string& name, ErrorKind kind = ErrorKind::Template);

}  // namespace platform
