#include "platform/audio/AacWriter.h"

#include "platform/audio/AudioFile.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace platform {

AacWriter::AacWriter(const std::filesystem::path& output, int bitRate)
    : file_(output.string()),
      muxer_({.path = output, .format = "ipod"}),
      frame_(ffmpeg::newFrame()),
      packet_(ffmpeg::newPacket()) {
    open(bitRate);
    muxer_.addStream(*ffmpeg::parametersOf(*codec_), 1, kAudioSampleRate);
    muxer_.begin();
}

void AacWriter::check(int code) const { ffmpeg::check(code, "cannot encode the sound", file_); }

void AacWriter::write(const float* samples, int64_t frames) {
    frame_->nb_samples = static_cast<int>(kBlockFrames);
    check(av_frame_make_writable(frame_.get()));
    for (int channel = 0; channel < kAudioChannels; ++channel) {
        auto* plane = reinterpret_cast<float*>(frame_->data[channel]);
        for (int64_t i = 0; i < frames; ++i) plane[i] = samples[i * kAudioChannels + channel];
    }
    frame_->nb_samples = static_cast<int>(frames);
    frame_->pts = position_;
    position_ += frames;
    submit(frame_.get());
}

void AacWriter::finish() {
    submit(nullptr);
    muxer_.finish();
}

void AacWriter::open(int bitRate) {
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!encoder) throw Error(ErrorKind::Failed, "there is no AAC encoder");
    codec_.reset(avcodec_alloc_context3(encoder));
    if (!codec_) throw Error(ErrorKind::Transient, "out of memory");
    codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    codec_->sample_rate = kAudioSampleRate;
    codec_->time_base = {1, kAudioSampleRate};
    codec_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    codec_->bit_rate = bitRate;
    codec_->flags |= AV_CODEC_FLAG_BITEXACT | AV_CODEC_FLAG_GLOBAL_HEADER;
    check(avcodec_open2(codec_.get(), encoder, nullptr));
    frame_->format = codec_->sample_fmt;
    frame_->sample_rate = kAudioSampleRate;
    frame_->nb_samples = static_cast<int>(kBlockFrames);
    frame_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    check(av_frame_get_buffer(frame_.get(), 0));
}

void AacWriter::submit(const AVFrame* frame) {
    check(avcodec_send_frame(codec_.get(), frame));
    while (avcodec_receive_packet(codec_.get(), packet_.get()) >= 0) muxer_.write(*packet_, 0);
}

}  // namespace platform
