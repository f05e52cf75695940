#include "platform/media/Mp4Muxer.h"

#include <vector>

#include "platform/media/Ffmpeg.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

namespace platform::ffmpeg {

namespace {

constexpr const char* kWriting = "cannot write";

struct FreeOutput {
    void operator()(AVFormatContext* output) const {
        avio_closep(&output->pb);
        avformat_free_context(output);
    }
};

}  // namespace

struct Mp4Muxer::Implementation {
    Settings settings;
    std::string file;
    std::unique_ptr<AVFormatContext, FreeOutput> output;
    std::vector<AVRational> ticks;
    bool isFinished = false;

    void check(int code) const { ffmpeg::check(code, kWriting, file); }
};

Mp4Muxer::Mp4Muxer(const Settings& settings) : implementation_(std::make_unique<Implementation>()) {
    prepare();
    Implementation& self = *implementation_;
    self.settings = settings;
    self.file = settings.path.string();
    const std::string url = "file:" + self.file;
    AVFormatContext* output = nullptr;
    self.check(avformat_alloc_output_context2(&output, nullptr, settings.format, url.c_str()));
    self.output.reset(output);
    output->flags |= AVFMT_FLAG_BITEXACT;
    self.check(avio_open(&output->pb, url.c_str(), AVIO_FLAG_WRITE));
}

Mp4Muxer::~Mp4Muxer() {
    implementation_->output.reset();
    std::error_code ignored;
    if (!implementation_->isFinished &&
        std::filesystem::is_regular_file(implementation_->settings.path, ignored))
        std::filesystem::remove(implementation_->settings.path, ignored);
}

int Mp4Muxer::addStream(const AVCodecParameters& parameters, int numerator, int denominator) {
    Implementation& self = *implementation_;
    AVStream* stream = avformat_new_stream(self.output.get(), nullptr);
    if (!stream) throw Error(ErrorKind::Transient, "out of memory", self.file);
    self.check(avcodec_parameters_copy(stream->codecpar, &parameters));
    // The tag belongs to the container that the stream came from.
    stream->codecpar->codec_tag = 0;
    stream->time_base = {numerator, denominator};
    self.ticks.push_back(stream->time_base);
    return stream->index;
}

void Mp4Muxer::begin() {
    Implementation& self = *implementation_;
    AVFormatContext* output = self.output.get();
    av_opt_set_int(output->priv_data, "movie_timescale", self.settings.movieTimescale, 0);
    if (self.settings.indexAtFront) av_opt_set(output->priv_data, "movflags", "+faststart", 0);
    self.check(avformat_write_header(output, nullptr));
}

void Mp4Muxer::write(AVPacket& packet, int stream) {
    Implementation& self = *implementation_;
    packet.stream_index = stream;
    packet.pos = -1;
    av_packet_rescale_ts(&packet, self.ticks[static_cast<size_t>(stream)],
                         self.output->streams[stream]->time_base);
    self.check(av_interleaved_write_frame(self.output.get(), &packet));
    self.check(self.output->pb->error);
}

void Mp4Muxer::finish() {
    Implementation& self = *implementation_;
    self.check(av_write_trailer(self.output.get()));
    self.check(self.output->pb->error);
    self.check(avio_closep(&self.output->pb));
    self.isFinished = true;
}

}  // namespace platform::ffmpeg
