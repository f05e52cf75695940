// Private to platform/media: the pictures of a file in presentation order, on the calling thread.
#pragma once

#include <optional>
#include <string>

#include "platform/base/CMTime.h"
#include "platform/media/Crop.h"
#include "platform/media/Ffmpeg.h"
#include "platform/media/Orientation.h"
#include "platform/media/VideoInfo.h"

namespace platform {

class VideoDecoder {
  public:
    /// `threads` decode; what they make of damage may depend on their number, and nothing else. Throws
    /// Error(kind).
    VideoDecoder(const FileHandle& file, const std::string& name, ErrorKind kind, int threads = 1);

    const VideoInfo& info() const { return info_; }
    Orientation orientation() const { return orientation_; }
    /// Of the pictures as they are stored.
    PixelShape pixelShape() const { return pixelShape_; }

    /// Decodes the next picture; false at the end. Damaged stretches are passed over.
    bool next();
    /// Goes on, after the first picture was decoded, with one that nothing before is needed for and that lies
    /// at a time or so many seconds before it, or earlier, as far as the file says; false when it cannot.
    bool seek(const CMTime& time, int secondsBefore);
    /// Goes on with the first picture.
    void seekToStart();
    /// The picture that next() decoded, valid until it is called again.
    const AVFrame& picture() const { return *frame_; }
    /// Its time, counted from the first picture: exact, also where the file rounds to milliseconds.
    CMTime time() const;
    /// When its display ends, as far as the file tells.
    CMTime endTime() const;

    /// The first thing that could not be read or decoded, if any.
    const std::optional<Error>& error() const { return error_; }

  private:
    bool feed();
    bool seekToTick(int64_t tick);
    bool roundsTimes() const;
    void noteDamage(int code);
    void noteTime();

    const std::string name_;
    const ErrorKind kind_;
    ffmpeg::Input input_;
    AVStream& stream_;
    ffmpeg::Codec codec_;
    ffmpeg::Frame frame_;
    ffmpeg::Packet packet_;
    VideoInfo info_;
    Orientation orientation_;
    PixelShape pixelShape_;
    std::optional<int64_t> firstTick_;
    int64_t tick_ = 0, nextTick_ = 0;
    std::optional<Error> error_;
};

}  // namespace platform
