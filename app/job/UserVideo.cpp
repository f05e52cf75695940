#include "app/job/UserVideo.h"

#include <algorithm>
#include <cstdio>

#include "platform/base/Error.h"
#include "platform/base/Limits.h"
#include "platform/media/FilmLength.h"
#include "platform/media/VideoReader.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::FileGate;

namespace {

/// A film whose pictures cannot be decoded has packets all the same.
void requirePicture(platform::VideoReader& reader, const std::string& name) {
    if (reader.nextFrame()) return;
    if (const auto error = reader.error()) throw Error(*error);
    throw Error(ErrorKind::Input, "the video has no picture", name);
}

void requireUsableSize(const platform::VideoInfo& info, const std::string& name) {
    constexpr int least = 2, most = platform::limitOf<int>("maxFilmSide");
    const auto [shorter, longer] = std::minmax(info.width, info.height);
    if (shorter >= least && longer <= most) return;
    throw Error(ErrorKind::Input,
                "the video has " + std::to_string(info.width) + "x" + std::to_string(info.height) +
                    " pixels; each side must have 2 to " + std::to_string(most),
                name);
}

}  // namespace

UserVideo judgeUserVideo(const fs::path& video, int framesPerSecond, int64_t firstFrame, int64_t mostFrames,
                         FileGate& gate, const std::stop_token& stop) {
    const fs::path file = fs::absolute(video).lexically_normal();
    const double mostSeconds = static_cast<double>(firstFrame + mostFrames + 1) / framesPerSecond;
    const auto film =
        platform::measureFilm(gate.open(file).file, video.string(), ErrorKind::Input, mostSeconds, stop);
    platform::VideoReader reader(gate.open(file).file, video.string(), ErrorKind::Input);
    requireUsableSize(reader.info(), video.string());
    requirePicture(reader, video.string());
    const int64_t frames = platform::framesWithin(film.length, framesPerSecond) - firstFrame;
    const double start = static_cast<double>(firstFrame) / framesPerSecond;
    const double seconds = platform::CMTimeGetSeconds(film.length) - start;
    if (frames < 1) {
        char text[80];
        std::snprintf(text, sizeof text, "lasts %.2f s and cannot start at %.2f s", seconds + start, start);
        throw Error(ErrorKind::Input, text, video.string());
    }
    return {file, frames, seconds, film.isWhole, reader.info().averageFrameRate};
}

}  // namespace multiscene
