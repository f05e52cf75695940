// Reads one video from front to back, picture by picture in presentation order, decoding a little ahead on a
// thread of its own.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/base/CMTime.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/media/Crop.h"
#include "platform/media/VideoInfo.h"
#include "platform/pixels/FilmPicture.h"

namespace platform {

/// One decoded picture: upright (rotation and mirroring of the file applied), top row first. Its size may
/// change within a film. Its memory goes back to the reader when the last frame that shows it is destroyed.
struct VideoFrame {
    std::shared_ptr<const FilmPicture> pixels;
    /// Exact, counted from the first picture of the file, which has 0.
    CMTime time;
};

struct VideoReaderSettings {
    int framesAhead = 2;  ///< pictures decoded before they are asked for
    /// Frames a second. 0: every picture of the file once. Else frame n is at
    /// n / framesPerSecond seconds and each picture starts with the frame nearest to its time: pictures are
    /// left out, or given again, the same buffer then.
    int framesPerSecond = 0;
    int64_t firstFrame = 0;   ///< of a rate that is asked for: the film begins with this one of its frames
    PictureShape shape = {};  ///< only the middle of each picture, in this shape; upright
    /// Of films with alpha: colours are multiplied by it.
    bool premultipliesAlpha = true;
};

/// The file is opened with the file protocol alone and with a fixed list of formats (MP4/MOV, Matroska/WebM,
/// AVI, MPEG-TS, Ogg): a "video" that is a playlist is refused and opens nothing. The first video track is
/// read; VP8 and VP9 with alpha are read with it. Every call to nextFrame() gives the next picture of the
/// file, however its frame rate varies, unless the settings ask for a rate.
class VideoReader {
  public:
    using Settings = VideoReaderSettings;

    struct Statistics {
        int64_t frames = 0;         ///< pictures converted
        double decodeSeconds = 0;   ///< CPU seconds of reading and decoding
        double convertSeconds = 0;  ///< CPU seconds of colour conversion and turning
    };

    /// Opens the file and reads its header. `name` stands for the file in messages; `kind` says whose file it
    /// is. Throws Error(kind) when it is no readable video.
    VideoReader(FileHandle file, const std::string& name, ErrorKind kind = ErrorKind::Template,
                const Settings& settings = {});
    ~VideoReader();
    VideoReader(const VideoReader&) = delete;
    VideoReader& operator=(const VideoReader&) = delete;

    /// What the file says; width and height are of the part that is delivered.
    const VideoInfo& info() const;

    /// Starts decoding ahead. nextFrame() does it by itself when nobody did.
    void start();
    /// The next picture; waits for it. Nothing at the end, after cancel(), and where the rest cannot be read.
    std::optional<VideoFrame> nextFrame();
    /// Stops decoding and wakes a waiting nextFrame(). Any thread.
    void cancel();

    /// The first thing that could not be read or decoded, if any so far. Whatever could be was still
    /// delivered.
    std::optional<Error> error() const;
    Statistics statistics() const;

  private:
    class Implementation;
    std::shared_ptr<Implementation> implementation_;
};

/// From now on this process keeps of the films that it reads when their frames are, and the pictures that
/// were looked at last, at most so many bytes. What is known of a film is not decoded again, as long as its
/// file stays the same, until somebody looks at it. For who plays the same films again and again.
void keepDecodedFilms(size_t mostBytes);

}  // namespace platform
