#include "platform/media/H264Encoder.h"

#include "platform/base/Clock.h"
#include "platform/media/ThreadCpu.h"
#include "platform/pixels/ToI420.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

namespace platform {

namespace {

// A multiple of the frame rate, so that a first picture at 1/fps is exact, and as fine as the tracks' own.
int movieTimescale(int framesPerSecond) {
    int timescale = framesPerSecond;
    while (timescale < 10000) timescale *= 2;
    return timescale;
}

ffmpeg::Mp4Muxer::Settings muxerSettings(const VideoWriter::Settings& settings) {
    ffmpeg::Mp4Muxer::Settings muxer;
    muxer.path = settings.path;
    muxer.indexAtFront = settings.optimiseForNetworkUse;
    muxer.movieTimescale = movieTimescale(settings.framesPerSecond);
    return muxer;
}

// Rendered colours are sRGB, which has BT.709's primaries. Small pictures are tagged as what players without
// a look at the tags take them for. A colour is the mean of four pixels and lies in their middle.
void tagColours(AVCodecContext& codec, YuvMatrix matrix) {
    const bool hd = matrix == YuvMatrix::BT709;
    codec.colorspace = hd ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    codec.color_primaries = AVCOL_PRI_BT709;
    codec.color_trc = AVCOL_TRC_BT709;
    codec.color_range = AVCOL_RANGE_MPEG;
    codec.chroma_sample_location = AVCHROMA_LOC_CENTER;
}

// How the encoder spreads bits over a film goes by processor otherwise: the way for AVX-512 reads memory that
// nobody has written, and so the bytes of a film depended on what had been in memory before.
constexpr const char* kSameOnEveryProcessor = "cpu-independent=1";

}  // namespace

H264Encoder::H264Encoder(const VideoWriter::Settings& settings)
    : settings_(settings),
      muxer_(muxerSettings(settings)),
      frame_(ffmpeg::newFrame()),
      packet_(ffmpeg::newPacket()) {
    openCodec();
    frame_->format = codec_->pix_fmt;
    frame_->width = codec_->width;
    frame_->height = codec_->height;
    ffmpeg::check(av_frame_get_buffer(frame_.get(), 0), "cannot encode", settings_.path.string());
    stream_ = muxer_.addStream(*ffmpeg::parametersOf(*codec_), 1, settings_.framesPerSecond);
    muxer_.begin();
}

void H264Encoder::openCodec() {
    const AVCodec* encoder = avcodec_find_encoder_by_name("libx264");
    if (!encoder) throw Error(ErrorKind::Failed, "the H.264 encoder libx264 is not installed");
    codec_.reset(avcodec_alloc_context3(encoder));
    if (!codec_) throw Error(ErrorKind::Transient, "out of memory");
    codec_->width = settings_.width;
    codec_->height = settings_.height;
    codec_->pix_fmt = AV_PIX_FMT_YUV420P;
    codec_->time_base = {1, settings_.framesPerSecond};
    codec_->framerate = {settings_.framesPerSecond, 1};
    codec_->sample_aspect_ratio = {1, 1};
    codec_->bit_rate = settings_.bitRate;
    codec_->thread_count = settings_.threads;
    codec_->flags |= AV_CODEC_FLAG_BITEXACT | AV_CODEC_FLAG_GLOBAL_HEADER;
    tagColours(*codec_, yuvMatrixFor(settings_.width, settings_.height));
    av_opt_set(codec_->priv_data, "preset", settings_.preset.c_str(), 0);
    av_opt_set(codec_->priv_data, "x264-params", kSameOnEveryProcessor, 0);
    ffmpeg::check(avcodec_open2(codec_.get(), encoder, nullptr), "cannot start the encoder",
                  settings_.path.string());
}

void H264Encoder::encode(const PixelBuffer& picture, int64_t presentationTime) {
    const double start = threadCpuSeconds();
    convert(picture);
    convertSeconds_ += threadCpuSeconds() - start;
    frame_->pts = presentationTime;
    submit(frame_.get());
}

void H264Encoder::finish() {
    submit(nullptr);
    muxer_.finish();
}

void H264Encoder::convert(const PixelBuffer& picture) {
    ffmpeg::check(av_frame_make_writable(frame_.get()), "cannot encode", settings_.path.string());
    const I420Planes planes{frame_->data[0],     frame_->linesize[0], frame_->data[1],
                            frame_->linesize[1], frame_->data[2],     frame_->linesize[2]};
    toI420(picture, yuvMatrixFor(settings_.width, settings_.height), planes);
}

void H264Encoder::submit(const AVFrame* frame) {
    const std::string file = settings_.path.string();
    ffmpeg::check(avcodec_send_frame(codec_.get(), frame), "cannot encode", file);
    for (;;) {
        const int code = avcodec_receive_packet(codec_.get(), packet_.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF) return;
        ffmpeg::check(code, "cannot encode", file);
        if (packet_->duration == 0) packet_->duration = 1;
        muxer_.write(*packet_, stream_);
    }
}

}  // namespace platform
