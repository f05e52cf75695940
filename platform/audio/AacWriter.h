// Private to platform/audio: encodes sound as AAC into an M4A file.
#pragma once

#include <filesystem>
#include <string>

#include "platform/media/Ffmpeg.h"
#include "platform/media/Mp4Muxer.h"

namespace platform {

class AacWriter {
  public:
    static constexpr int64_t kBlockFrames = 1024;

    /// `bitRate`: bits a second. Throws Error.
    AacWriter(const std::filesystem::path& output, int bitRate);

    /// Interleaved stereo at kAudioSampleRate: kBlockFrames sample frames, or fewer at the end. Throws Error.
    void write(const float* samples, int64_t frames);
    /// Completes the file, which is removed otherwise. Throws Error.
    void finish();

  private:
    void check(int code) const;
    void open(int bitRate);
    void submit(const AVFrame* frame);

    const std::string file_;
    ffmpeg::Mp4Muxer muxer_;
    ffmpeg::Codec codec_;
    ffmpeg::Frame frame_;
    ffmpeg::Packet packet_;
    int64_t position_ = 0;
};

}  // namespace platform
