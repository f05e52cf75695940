// Private to platform/media: turns pictures into H.264 and puts them into an MP4 file, on the calling thread
// and the encoder's own threads.
#pragma once

#include "platform/media/Ffmpeg.h"
#include "platform/media/Mp4Muxer.h"
#include "platform/media/VideoWriter.h"

namespace platform {

class H264Encoder {
  public:
    /// Throws Error.
    explicit H264Encoder(const VideoWriter::Settings& settings);

    void encode(const PixelBuffer& picture, int64_t presentationTime);
    /// Completes the file. Throws Error.
    void finish();

    /// CPU seconds of the calling thread spent on colour conversion.
    double convertSeconds() const { return convertSeconds_; }

  private:
    void openCodec();
    void convert(const PixelBuffer& picture);
    void submit(const AVFrame* frame);

    const VideoWriter::Settings settings_;
    ffmpeg::Mp4Muxer muxer_;
    ffmpeg::Codec codec_;
    ffmpeg::Frame frame_;
    ffmpeg::Packet packet_;
    int stream_ = 0;
    double convertSeconds_ = 0;
};

}  // namespace platform
