#include "platform/media/Join.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "platform/media/Ffmpeg.h"
#include "platform/media/Mp4Muxer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace platform {

namespace {

/// The packets of one track, one after another.
class PacketSource {
  public:
    PacketSource(const std::filesystem::path& path, ffmpeg::Content content)
        : name_(path.string()),
          input_(ffmpeg::openInput(name_, content, name_, ErrorKind::Failed)),
          stream_(ffmpeg::selectStream(*input_, content, name_, ErrorKind::Failed)),
          packet_(ffmpeg::newPacket()) {}

    const AVStream& stream() const { return stream_; }
    AVRational ticks() const { return stream_.time_base; }
    AVPacket& packet() { return *packet_; }
    bool hasPacket() const { return hasPacket_; }

    /// Leaves out what starts at or after `end` seconds (a rational), and shortens what goes over it.
    void endAt(int64_t value, AVRational scale) {
        lastTick_ = av_rescale_q_rnd(value, scale, ticks(), AV_ROUND_NEAR_INF);
    }

    void advance() {
        hasPacket_ = false;
        do {
            av_packet_unref(packet_.get());
            const int code = ffmpeg::readPacket(*input_, *packet_, name_);
            if (code == AVERROR_EOF) return;
            ffmpeg::check(code, "cannot read", name_);
        } while (packet_->stream_index != stream_.index);
        if (packet_->pts >= lastTick_) return;
        packet_->duration = std::min(packet_->duration, lastTick_ - packet_->pts);
        hasPacket_ = true;
    }

    bool isBefore(const PacketSource& other) const {
        return av_compare_ts(packet_->dts, ticks(), other.packet_->dts, other.ticks()) <= 0;
    }

  private:
    const std::string name_;
    ffmpeg::Input input_;
    AVStream& stream_;
    ffmpeg::Packet packet_;
    bool hasPacket_ = false;
    int64_t lastTick_ = std::numeric_limits<int64_t>::max();
};

int64_t endOf(const AVStream& stream) { return std::max<int64_t>(stream.start_time, 0) + stream.duration; }

}  // namespace

void joinVideoAndAudio(const std::filesystem::path& video, const std::filesystem::path& audio,
                       const std::filesystem::path& output, std::stop_token stop) {
    std::array<PacketSource, 2> sources{PacketSource(video, ffmpeg::Content::Video),
                                        PacketSource(audio, ffmpeg::Content::Audio)};
    auto& [film, sound] = sources;
    if (film.stream().duration > 0) sound.endAt(endOf(film.stream()), film.ticks());

    ffmpeg::Mp4Muxer::Settings settings;
    settings.path = output;
    settings.indexAtFront = true;
    // The film's own ticks, in which its first picture's time is a whole number.
    settings.movieTimescale = film.ticks().den;
    ffmpeg::Mp4Muxer muxer(settings);
    for (PacketSource& source : sources)
        muxer.addStream(*source.stream().codecpar, source.ticks().num, source.ticks().den);
    muxer.begin();

    film.advance();
    sound.advance();
    while (film.hasPacket() || sound.hasPacket()) {
        if (stop.stop_requested()) throw Error(ErrorKind::Cancelled, "cancelled");
        const bool takesFilm = film.hasPacket() && (!sound.hasPacket() || film.isBefore(sound));
        PacketSource& source = takesFilm ? film : sound;
        muxer.write(source.packet(), takesFilm ? 0 : 1);
        source.advance();
    }
    muxer.finish();
}

}  // namespace platform
