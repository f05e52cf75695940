// Private to platform/media and platform/audio: writes encoded packets into an MP4 or M4A file that depends
// on nothing but the packets.
#pragma once

#include <filesystem>
#include <memory>

struct AVCodecParameters;
struct AVPacket;
struct AVStream;

namespace platform::ffmpeg {

class Mp4Muxer {
  public:
    struct Settings {
        std::filesystem::path path;  ///< replaced when it exists
        const char* format = "mp4";  ///< or "ipod", which is M4A
        bool indexAtFront = false;
        /// Ticks a second in which edit lists count: a first picture at 1/fps is exact in a multiple of fps.
        int movieTimescale = 1000;
    };

    /// Creates the file. Throws Error.
    explicit Mp4Muxer(const Settings& settings);
    /// Removes the file unless it was finished.
    ~Mp4Muxer();
    Mp4Muxer(const Mp4Muxer&) = delete;
    Mp4Muxer& operator=(const Mp4Muxer&) = delete;

    /// Adds a stream of ticks of numerator/denominator seconds; before begin(). Gives its index.
    int addStream(const AVCodecParameters& parameters, int numerator, int denominator);
    void begin();
    /// Writes a packet whose times count in the ticks given to addStream(); takes its content. Throws Error.
    void write(AVPacket& packet, int stream);
    /// Completes the file. Throws Error.
    void finish();

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace platform::ffmpeg
