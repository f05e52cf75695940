#include "platform/media/Ffmpeg.h"

#include <algorithm>
#include <cstdarg>
#include <mutex>

#include "platform/base/Limits.h"
#include "platform/base/Log.h"
#include "platform/base/Memory.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace platform::ffmpeg {

namespace {

// 8K video. A picture of this size takes 151 MB, and a handful of them may be alive.
constexpr int64_t kMaxPixels = limitOf<int64_t>("maxFilmPixels");
// One of them with 16 bits for each colour; the tables of a damaged file claim gigabytes.
constexpr size_t kMostBytesAtOnce = kMaxPixels * 8 + (1 << 20);

// None of these opens further files; playlists, image sequences and the like are not among them.
constexpr const char* kVideoFormats = "mov,mp4,matroska,webm,avi,mpegts,ogg";
constexpr const char* kAudioFormats =
    "wav,w64,aiff,caf,mp3,flac,ogg,aac,amr,mov,mp4,matroska,webm,avi,mpegts";

void forwardLog(void* context, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_WARNING || !log::isVerbose()) return;
    char line[512];
    int prefix = 1;
    av_log_format_line2(context, level, format, arguments, line, sizeof line, &prefix);
    std::string text = line;
    while (!text.empty() && text.back() == '\n') text.pop_back();
    log::info(text);
}

bool hasAlphaPackets(const AVStream& stream) {
    const AVDictionaryEntry* mode = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    return mode && std::string_view(mode->value) == "1";
}

/// The libraries' own VP8 and VP9 decoders pass the alpha of a packet over.
const AVCodec* decoderFor(const AVStream& stream) {
    const AVCodecID codec = stream.codecpar->codec_id;
    const AVCodec* withAlpha = nullptr;
    if (hasAlphaPackets(stream) && codec == AV_CODEC_ID_VP9)
        withAlpha = avcodec_find_decoder_by_name("libvpx-vp9");
    else if (hasAlphaPackets(stream) && codec == AV_CODEC_ID_VP8)
        withAlpha = avcodec_find_decoder_by_name("libvpx");
    return withAlpha ? withAlpha : avcodec_find_decoder(codec);
}

const char* describe(Content content) { return content == Content::Video ? "video" : "sound"; }

struct Options {
    AVDictionary* dictionary = nullptr;
    ~Options() { av_dict_free(&dictionary); }
};

struct CloseFile {
    void operator()(AVIOContext* file) const { avio_closep(&file); }
};
using OpenFile = std::unique_ptr<AVIOContext, CloseFile>;

/// Whatever became of it: what the disk did not give looks like damage.
void requireRead(const AVIOContext& file, const std::string& name) {
    const int failure = AVUNERROR(file.error);
    if (isPassing(failure)) throw errnoError(failure, "cannot be read", name);
}

OpenFile openFile(const std::string& url, const std::string& name, ErrorKind kind) {
    Options options;
    av_dict_set(&options.dictionary, "protocol_whitelist", "file", 0);
    AVIOContext* file = nullptr;
    check(avio_open2(&file, url.c_str(), AVIO_FLAG_READ, nullptr, &options.dictionary), "cannot be opened",
          name, kind);
    return OpenFile(file);
}

template <class Pointer>
Pointer orOutOfMemory(Pointer pointer) {
    if (!pointer) throw Error(ErrorKind::Transient, "out of memory");
    return pointer;
}

}  // namespace

void Release::operator()(AVFormatContext* input) const {
    AVIOContext* file = input->pb;  // opened by openInput()
    avformat_close_input(&input);
    avio_closep(&file);
}
void Release::operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
void Release::operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
void Release::operator()(AVFrame* frame) const { av_frame_free(&frame); }
void Release::operator()(AVPacket* packet) const { av_packet_free(&packet); }

Frame newFrame() { return orOutOfMemory(Frame(av_frame_alloc())); }
Packet newPacket() { return orOutOfMemory(Packet(av_packet_alloc())); }

Parameters parametersOf(const AVCodecContext& encoder) {
    Parameters parameters = orOutOfMemory(Parameters(avcodec_parameters_alloc()));
    check(avcodec_parameters_from_context(parameters.get(), &encoder), "cannot encode", {});
    return parameters;
}

void prepare() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_callback(forwardLog);
        av_max_alloc(kMostBytesAtOnce);
    });
}

Error error(int code, const std::string& action, const std::string& file, ErrorKind kind) {
    const int errnoValue = AVUNERROR(code);
    // A file can ask for any amount of memory, and for data that never come: that does not pass.
    const bool isAskedTooMuch = code == AVERROR(ENOMEM) && !memoryIsShort();
    if (kind != ErrorKind::Failed && (isAskedTooMuch || code == AVERROR(EAGAIN)))
        return Error(kind, action + ": the file is damaged", file);
    if (errnoValue > 0 && errnoValue < 4096) return errnoError(errnoValue, action, file, kind);
    // The settings of our own encoders are judged beforehand: what fails inside them is for want of memory.
    if (code == AVERROR_EXTERNAL && kind == ErrorKind::Failed)
        return Error(ErrorKind::Transient, action + ": out of memory", file);
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return Error(kind, action + ": " + text, file);
}

int check(int code, const std::string& action, const std::string& file, ErrorKind kind) {
    if (code < 0) throw error(code, action, file, kind);
    return code;
}

Input openInput(const std::string& path, Content content, const std::string& name, ErrorKind kind) {
    prepare();
    Options options;
    av_dict_set(&options.dictionary, "protocol_whitelist", "file", 0);
    av_dict_set(&options.dictionary, "format_whitelist",
                content == Content::Video ? kVideoFormats : kAudioFormats, 0);
    const std::string url = "file:" + path;
    OpenFile file = openFile(url, name, kind);
    AVFormatContext* opened = orOutOfMemory(avformat_alloc_context());
    opened->pb = file.get();
    const int code = avformat_open_input(&opened, url.c_str(), nullptr, &options.dictionary);
    if (code < 0) requireRead(*file, name);
    // Both say that the content is of no kind that may be opened: unknown, or known and not allowed.
    if (code == AVERROR(EINVAL) || code == AVERROR_INVALIDDATA)
        throw Error(kind, std::string("is no readable ") + describe(content) + " of a known format", name);
    // Tables that claim more entries than memory can hold.
    if (code == AVERROR(ENOMEM)) throw Error(kind, "is damaged: it claims to hold more than it can", name);
    check(code, "cannot be opened", name, kind);
    Input input(opened);
    file.release();
    const int found = avformat_find_stream_info(input.get(), nullptr);
    requireRead(*input->pb, name);
    check(found, "cannot be read", name, kind);
    return input;
}

int readPacket(AVFormatContext& input, AVPacket& packet, const std::string& name) {
    const int code = av_read_frame(&input, &packet);
    if (code < 0) requireRead(*input.pb, name);
    return code;
}

bool isFilm(const AVStream* stream) {
    return stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           !(stream->disposition & AV_DISPOSITION_ATTACHED_PIC);
}

AVStream& selectStream(AVFormatContext& input, Content content, const std::string& name, ErrorKind kind) {
    const auto isWanted = [content](const AVStream* stream) {
        return content == Content::Video ? isFilm(stream)
                                         : stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
    };
    AVStream* selected = nullptr;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        AVStream* stream = input.streams[i];
        if (!selected && isWanted(stream))
            selected = stream;
        else
            stream->discard = AVDISCARD_ALL;
    }
    if (!selected) throw Error(kind, std::string("holds no ") + describe(content) + " track", name);
    return *selected;
}

bool hasAlpha(const AVStream& stream) {
    if (hasAlphaPackets(stream)) return true;
    const auto* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(stream.codecpar->format));
    return format && (format->flags & AV_PIX_FMT_FLAG_ALPHA);
}

int64_t usualDuration(const AVStream& stream) {
    const AVRational rate = stream.avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0) return 1;
    return std::max<int64_t>(av_rescale_q(1, av_inv_q(rate), stream.time_base), 1);
}

Codec openDecoder(const AVStream& stream, const std::string& name, ErrorKind kind, int threads) {
    const AVCodec* decoder = decoderFor(stream);
    if (!decoder) {
        const std::string codecName = avcodec_get_name(stream.codecpar->codec_id);
        throw Error(kind, "cannot be decoded: no decoder for " + codecName, name);
    }
    const AVCodecParameters& picture = *stream.codecpar;
    if (picture.width > 0 && picture.height > kMaxPixels / picture.width)
        throw Error(kind,
                    "has " + std::to_string(picture.width) + "x" + std::to_string(picture.height) +
                        " pixels, more than the " + std::to_string(kMaxPixels) + " that are allowed",
                    name);
    Codec codec = orOutOfMemory(Codec(avcodec_alloc_context3(decoder)));
    check(avcodec_parameters_to_context(codec.get(), stream.codecpar), "cannot be decoded", name, kind);
    codec->pkt_timebase = stream.time_base;
    codec->max_pixels = kMaxPixels;
    codec->thread_count = threads;
    check(avcodec_open2(codec.get(), decoder, nullptr), "cannot be decoded", name, kind);
    return codec;
}

}  // namespace platform::ffmpeg
