#include "app/Job/UserVideo.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "platform/media/VideoReader.h"
#include "platform/media/VideoWriter.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::VideoFrame;
using platform::VideoReader;
using platform::VideoWriter;

namespace {

constexpr double kSameRate = 0.005;  // share: 29.97 counts as 30
constexpr double kBitsAPixel = 0.4;  // far above what the final encoding keeps
constexpr int kLeastBitRate = 100'000, kMostBitRate = 100'000'000;

VideoWriter::Settings settingsFor(const platform::VideoInfo& info, int framesPerSecond,
                                  const fs::path& path) {
    VideoWriter::Settings settings;
    settings.path = path;
    settings.width = std::max(2, info.width / 2 * 2);
    settings.height = std::max(2, info.height / 2 * 2);
    settings.framesPerSecond = framesPerSecond;
    const double bits = kBitsAPixel * settings.width * settings.height * framesPerSecond;
    settings.bitRate = static_cast<int>(std::clamp<double>(bits, kLeastBitRate, kMostBitRate));
    return settings;
}

/// The part of the picture that fits the writer's buffer; a smaller picture lies in its corner.
void copyPicture(const platform::PixelBuffer& from, platform::PixelBuffer& to) {
    std::memset(to.data(), 0, to.size());
    const size_t bytes = static_cast<size_t>(std::min(from.stride(), to.stride()));
    for (int row = 0; row < std::min(from.height(), to.height()); ++row)
        std::memcpy(to.data() + static_cast<size_t>(row) * to.stride(),
                    from.data() + static_cast<size_t>(row) * from.stride(), bytes);
}

double secondsOf(const VideoFrame& frame) { return platform::CMTimeGetSeconds(frame.time); }

/// Walks the source's pictures along the times of the frames.
class Resampler {
  public:
    explicit Resampler(VideoReader& reader)
        : reader_(reader), current_(reader.nextFrame()), next_(reader.nextFrame()) {}

    /// The picture that is seen at that time; null after the end.
    const platform::PixelBuffer* at(double seconds) {
        while (next_ && secondsOf(*next_) <= seconds) {
            lastStep_ = secondsOf(*next_) - secondsOf(*current_);
            current_ = std::move(next_);
            next_ = reader_.nextFrame();
        }
        const bool hasEnded = !current_ || (!next_ && seconds >= secondsOf(*current_) + lastStep_);
        return hasEnded ? nullptr : current_->pixels.get();
    }

  private:
    VideoReader& reader_;
    std::optional<VideoFrame> current_, next_;
    double lastStep_ = 1e-3;  ///< how long the last picture stays, in seconds
};

int64_t resample(VideoReader& reader, VideoWriter& writer, int framesPerSecond, const std::stop_token& stop) {
    Resampler pictures(reader);
    int64_t frame = 0;
    for (; const auto* picture = pictures.at(static_cast<double>(frame) / framesPerSecond); ++frame) {
        if (stop.stop_requested()) throw Error(ErrorKind::Cancelled, "cancelled");
        auto buffer = writer.takeBuffer();
        copyPicture(*picture, *buffer);
        if (!writer.append(std::move(buffer), frame)) break;
    }
    return frame;
}

UserVideo converted(VideoReader& reader, const std::string& name, int framesPerSecond, const fs::path& path,
                    const std::stop_token& stop) {
    VideoWriter writer(settingsFor(reader.info(), framesPerSecond, path));
    const int64_t frames = resample(reader, writer, framesPerSecond, stop);
    if (const auto error = reader.error()) throw Error(*error);
    if (frames == 0) throw Error(ErrorKind::Input, "the video has no picture", name);
    writer.finish();
    if (const auto error = writer.error()) throw Error(*error);
    return {path, frames};
}

/// What the encoder takes.
void requireUsableSize(const platform::VideoInfo& info, const std::string& name) {
    constexpr int least = 2, most = 16384;
    const auto [shorter, longer] = std::minmax(info.width, info.height);
    if (shorter >= least && longer <= most) return;
    throw Error(ErrorKind::Input,
                "the video has " + std::to_string(info.width) + "x" + std::to_string(info.height) +
                    " pixels; each side must have 2 to 16384",
                name);
}

bool hasRate(const platform::VideoInfo& info, int framesPerSecond) {
    return info.frameCount > 0 &&
           std::abs(info.averageFrameRate - framesPerSecond) < kSameRate * framesPerSecond;
}

}  // namespace

UserVideo userVideoAtRate(const fs::path& video, int framesPerSecond, const fs::path& path,
                          const std::stop_token& stop) {
    VideoReader reader(platform::FileGate::shared().open(video).file, video.string(), ErrorKind::Input);
    requireUsableSize(reader.info(), video.string());
    if (hasRate(reader.info(), framesPerSecond)) return {video, reader.info().frameCount};
    return converted(reader, video.string(), framesPerSecond, path, stop);
}

}  // namespace multiscene
