#include "platform/media/VideoDecoder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

namespace platform {

namespace {

Orientation orientationOf(const AVStream& stream) {
    size_t size = 0;
    const uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!matrix || size < 9 * sizeof(int32_t)) return {};
    return Orientation::fromDisplayMatrix(reinterpret_cast<const int32_t*>(matrix));
}

// In the stream's own ticks; of the whole file where the stream does not say.
CMTime durationOf(const AVFormatContext& input, const AVStream& stream) {
    const bool knowsStart = stream.start_time != AV_NOPTS_VALUE;
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0) {
        const int64_t end = stream.duration + std::max<int64_t>(knowsStart ? stream.start_time : 0, 0);
        return CMTimeMake(end * stream.time_base.num, stream.time_base.den);
    }
    if (input.duration != AV_NOPTS_VALUE && input.duration > 0)
        return CMTimeMake(input.duration, AV_TIME_BASE);
    return CMTimeMake(0, 1);
}

bool hasStreamOf(const AVFormatContext& input, AVMediaType type) {
    return std::any_of(input.streams, input.streams + input.nb_streams,
                       [&](const AVStream* stream) { return stream->codecpar->codec_type == type; });
}

/// Nearly square ones come of rounding, and extreme ones of damage.
PixelShape pixelShapeOf(AVFormatContext& input, AVStream& stream) {
    constexpr double least = 0.02, most = 4;
    const AVRational shape = av_guess_sample_aspect_ratio(&input, &stream, nullptr);
    if (shape.num <= 0 || shape.den <= 0) return {};
    const double ratio = av_q2d(shape);
    if (std::abs(ratio - 1) < least || ratio > most || ratio < 1 / most) return {};
    return {shape.num, shape.den};
}

VideoInfo infoOf(const AVFormatContext& input, const AVStream& stream, Orientation orientation,
                 PixelShape pixels) {
    VideoInfo info;
    info.width = pixels.widthOf(stream.codecpar->width);
    info.height = stream.codecpar->height;
    if (orientation.swapsSides()) std::swap(info.width, info.height);
    info.duration = durationOf(input, stream);
    if (stream.avg_frame_rate.num > 0 && stream.avg_frame_rate.den > 0)
        info.averageFrameRate = av_q2d(stream.avg_frame_rate);
    info.frameCount = stream.nb_frames;
    info.hasAudio = hasStreamOf(input, AVMEDIA_TYPE_AUDIO);
    info.hasAlpha = ffmpeg::hasAlpha(stream);
    info.codec = avcodec_get_name(stream.codecpar->codec_id);
    return info;
}

}  // namespace

VideoDecoder::VideoDecoder(const FileHandle& file, const std::string& name, ErrorKind kind, int threads)
    : name_(name),
      kind_(kind),
      input_(ffmpeg::openInput(file.path(), ffmpeg::Content::Video, name, kind)),
      stream_(ffmpeg::selectStream(*input_, ffmpeg::Content::Video, name, kind)),
      codec_(ffmpeg::openDecoder(stream_, name, kind, threads)),
      frame_(ffmpeg::newFrame()),
      packet_(ffmpeg::newPacket()),
      orientation_(orientationOf(stream_)),
      pixelShape_(pixelShapeOf(*input_, stream_)) {
    info_ = infoOf(*input_, stream_, orientation_, pixelShape_);
}

bool VideoDecoder::next() {
    for (;;) {
        const int code = avcodec_receive_frame(codec_.get(), frame_.get());
        if (code == 0) {
            noteTime();
            return true;
        }
        if (code == AVERROR_EOF) return false;
        if (code != AVERROR(EAGAIN))
            noteDamage(code);
        else if (!feed())
            return false;
    }
}

// Gives the decoder one packet, or at the end of the file the word to give out what it still holds.
bool VideoDecoder::feed() {
    int code = 0;
    do {
        av_packet_unref(packet_.get());
        code = ffmpeg::readPacket(*input_, *packet_, name_);
    } while (code >= 0 && packet_->stream_index != stream_.index);
    if (code < 0) {
        if (code != AVERROR_EOF) noteDamage(code);
        return avcodec_send_packet(codec_.get(), nullptr) >= 0;
    }
    code = avcodec_send_packet(codec_.get(), packet_.get());
    av_packet_unref(packet_.get());
    if (code < 0) noteDamage(code);
    return true;
}

bool VideoDecoder::seek(const CMTime& time, int secondsBefore) {
    const int64_t ticks = av_rescale_q(time.value - int64_t{secondsBefore} * time.timescale,
                                       {1, time.timescale}, stream_.time_base);
    return ticks > 0 && seekToTick(firstTick_.value_or(0) + ticks);
}

void VideoDecoder::seekToStart() {
    seekToTick(firstTick_.value_or(0));
    nextTick_ = firstTick_.value_or(0);
}

bool VideoDecoder::seekToTick(int64_t tick) {
    const bool isThere = avformat_seek_file(input_.get(), stream_.index, INT64_MIN, tick, tick, 0) >= 0;
    avcodec_flush_buffers(codec_.get());
    nextTick_ = INT64_MAX / 4;  // of a file that does not tell its pictures' times, nothing is known here
    return isThere;
}

void VideoDecoder::noteDamage(int code) {
    if (!error_) error_ = ffmpeg::error(code, "is damaged", name_, kind_);
}

void VideoDecoder::noteTime() {
    const int64_t stamp = frame_->best_effort_timestamp;
    tick_ = stamp == AV_NOPTS_VALUE ? nextTick_ : stamp;
    nextTick_ = tick_ + std::max<int64_t>(frame_->pkt_duration, ffmpeg::usualDuration(stream_));
    if (!firstTick_) firstTick_ = tick_;
}

bool VideoDecoder::roundsTimes() const {
    return std::strcmp(input_->iformat->name, "matroska,webm") == 0 && stream_.avg_frame_rate.num > 0 &&
           stream_.avg_frame_rate.den > 0;
}

CMTime VideoDecoder::time() const {
    const int64_t tick = tick_ - firstTick_.value_or(0);
    if (roundsTimes()) {
        // The first time and this one may each be half a tick off the picture they belong to.
        const AVRational period = av_inv_q(stream_.avg_frame_rate);
        const int64_t picture = av_rescale_q(tick, stream_.time_base, period);
        if (std::abs(av_rescale_q(picture, period, stream_.time_base) - tick) <= 1)
            return CMTimeMake(picture * period.num, period.den);
    }
    return CMTimeMake(tick * stream_.time_base.num, stream_.time_base.den);
}

CMTime VideoDecoder::endTime() const {
    const int64_t ticks = nextTick_ - firstTick_.value_or(0);
    return CMTimeMake(ticks * stream_.time_base.num, stream_.time_base.den);
}

}  // namespace platform
