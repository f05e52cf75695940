#include "platform/media/FilmLength.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

#include "platform/media/Ffmpeg.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace platform {

namespace {

// Packets lie in the order of decoding; this many at most lie before one that is shown earlier.
constexpr size_t kMostReordered = 16;

/// The times of a film's pictures, brought into order.
class PictureTimes {
  public:
    explicit PictureTimes(const AVStream& stream) : stream_(stream), usual_(ffmpeg::usualDuration(stream)) {}

    void add(const AVPacket& packet) {
        if (packet.flags & AV_PKT_FLAG_DISCARD) return;
        int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
        if (time == AV_NOPTS_VALUE) time = waiting_.empty() ? end_.value_or(0) : waiting_.rbegin()->second;
        waiting_.emplace(time, time + (packet.duration > 0 ? packet.duration : usual_));
        if (waiting_.size() > kMostReordered) take();
    }
    void addEnd() {
        while (!waiting_.empty()) take();
    }

    bool isEmpty() const { return !first_; }
    double secondsSeen() const { return isEmpty() ? 0 : seconds(latest_ - *first_); }
    CMTime length() const {
        return CMTimeMake((*end_ - *first_) * stream_.time_base.num, stream_.time_base.den);
    }

    void requireNoGap(const std::string& name, ErrorKind kind) const {
        if (seconds(stepEnd_ - stepStart_) <= kLongestPicture) return;
        char text[160];
        std::snprintf(text, sizeof text,
                      "is damaged: it has no picture from %.1f s to %.1f s; each may stand for %d s",
                      seconds(stepStart_ - *first_), seconds(stepEnd_ - *first_), kLongestPicture);
        throw Error(kind, text, name);
    }

  private:
    double seconds(int64_t ticks) const { return static_cast<double>(ticks) * av_q2d(stream_.time_base); }

    void take() {
        const auto [time, end] = *waiting_.begin();
        waiting_.erase(waiting_.begin());
        if (first_ && time - latest_ > stepEnd_ - stepStart_) {
            stepStart_ = latest_;
            stepEnd_ = time;
        }
        first_ = first_.value_or(time);
        latest_ = time;
        end_ = std::max(end_.value_or(end), end);
    }

    const AVStream& stream_;
    const int64_t usual_;
    std::multimap<int64_t, int64_t> waiting_;  // start and end, ticks as all of these
    std::optional<int64_t> first_, end_;
    int64_t latest_ = 0;
    int64_t stepStart_ = 0, stepEnd_ = 0;  // the longest that one picture stands
};

}  // namespace

int64_t framesWithin(const CMTime& length, int framesPerSecond) {
    if (length.timescale <= 0) return 1;
    return std::max<int64_t>(av_rescale(length.value, framesPerSecond, length.timescale), 1);
}

FilmLength measureFilm(const FileHandle& file, const std::string& name, ErrorKind kind, double mostSeconds,
                       const std::stop_token& stop) {
    const ffmpeg::Input input = ffmpeg::openInput(file.path(), ffmpeg::Content::Video, name, kind);
    const AVStream& stream = ffmpeg::selectStream(*input, ffmpeg::Content::Video, name, kind);
    const ffmpeg::Packet packet = ffmpeg::newPacket();
    PictureTimes times(stream);
    bool isWhole = true;
    while (ffmpeg::readPacket(*input, *packet, name) >= 0) {
        if (stop.stop_requested()) throw Error(ErrorKind::Cancelled, "cancelled");
        if (packet->stream_index == stream.index) times.add(*packet);
        av_packet_unref(packet.get());
        isWhole = times.secondsSeen() < mostSeconds;
        if (!isWhole) break;
    }
    if (isWhole) times.addEnd();
    if (times.isEmpty()) throw Error(kind, "the video has no picture", name);
    times.requireNoGap(name, kind);
    return {times.length(), isWhole};
}

}  // namespace platform
