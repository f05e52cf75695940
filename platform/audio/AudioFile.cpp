#include "platform/audio/AudioFile.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/base/Limits.h"
#include "platform/base/Saturating.h"
#include "platform/media/Ffmpeg.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/intreadwrite.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace platform {

namespace {

struct FreeResampler {
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};

/// The opened file and the packets of its first sound track.
class PacketReader {
  public:
    PacketReader(const FileHandle& file, const std::string& name, ErrorKind kind)
        : name_(name),
          input_(ffmpeg::openInput(file.path(), ffmpeg::Content::Audio, name, kind)),
          stream_(ffmpeg::selectStream(*input_, ffmpeg::Content::Audio, name, kind)),
          packet_(ffmpeg::newPacket()) {}

    const AVStream& stream() const { return stream_; }
    /// When the first picture of a film is shown, in ticks of the sound; none in a file without pictures.
    std::optional<int64_t> pictureStart() const {
        const AVStream* const* end = input_->streams + input_->nb_streams;
        const auto* film =
            std::find_if(input_->streams, input_->streams + input_->nb_streams, ffmpeg::isFilm);
        if (film == end || (*film)->start_time == AV_NOPTS_VALUE) return std::nullopt;
        return av_rescale_q((*film)->start_time, (*film)->time_base, stream_.time_base);
    }
    /// In Ogg a packet's length already is without the padding at its end.
    bool lengthsExcludePadding() const { return std::strcmp(input_->iformat->name, "ogg") == 0; }

    /// The next packet of the track; none at the end and where the file is damaged.
    AVPacket* next() {
        do {
            av_packet_unref(packet_.get());
            if (ffmpeg::readPacket(*input_, *packet_, name_) < 0) return nullptr;
        } while (packet_->stream_index != stream_.index);
        return packet_.get();
    }

  private:
    const std::string name_;
    ffmpeg::Input input_;
    AVStream& stream_;
    ffmpeg::Packet packet_;
};

/// Making many samples of few, and one sound of many channels, takes memory and time.
void requireUsual(const AVCodecParameters& sound, const std::string& name, ErrorKind kind) {
    constexpr auto least = limitOf<int>("minSoundRate"), most = limitOf<int>("maxSoundRate");
    constexpr auto mostChannels = limitOf<int>("maxSoundChannels");
    if (sound.sample_rate < least || sound.sample_rate > most)
        throw Error(kind,
                    "has " + std::to_string(sound.sample_rate) + " samples a second; there must be " +
                        std::to_string(least) + " to " + std::to_string(most),
                    name);
    if (sound.ch_layout.nb_channels < 1 || sound.ch_layout.nb_channels > mostChannels)
        throw Error(kind,
                    "has " + std::to_string(sound.ch_layout.nb_channels) + " channels; there must be 1 to " +
                        std::to_string(mostChannels),
                    name);
}

/// Brings decoded sound of any form to interleaved stereo floats at kAudioSampleRate.
class Resampler {
  public:
    /// Appends the frame to `samples`; without a frame, what is still held back.
    void convert(const AVFrame* frame, std::vector<float>& samples) {
        if (frame && !isUsual(*frame)) return;
        if (frame && !matches(*frame)) {
            convert(nullptr, samples);
            configure(*frame);
        }
        if (!resampler_) return;
        const int given = frame ? frame->nb_samples : 0;
        const int room = swr_get_out_samples(resampler_.get(), given);
        if (room <= 0) return;
        const size_t used = samples.size();
        samples.resize(used + static_cast<size_t>(room) * kAudioChannels);
        auto* out = reinterpret_cast<uint8_t*>(samples.data() + used);
        const auto** in = frame ? const_cast<const uint8_t**>(frame->extended_data) : nullptr;
        const int made = std::max(swr_convert(resampler_.get(), &out, room, in, given), 0);
        samples.resize(used + static_cast<size_t>(made) * kAudioChannels);
    }

  private:
    /// What a file says in its head need not be so.
    static bool isUsual(const AVFrame& frame) {
        return frame.sample_rate >= limitOf<int>("minSoundRate") &&
               frame.sample_rate <= limitOf<int>("maxSoundRate") &&
               frame.ch_layout.nb_channels <= limitOf<int>("maxSoundChannels");
    }
    bool matches(const AVFrame& frame) const {
        return resampler_ && frame.format == format_ && frame.sample_rate == rate_ &&
               frame.ch_layout.nb_channels == channels_;
    }

    void configure(const AVFrame& frame) {
        format_ = frame.format;
        rate_ = frame.sample_rate;
        channels_ = frame.ch_layout.nb_channels;
        AVChannelLayout from{}, to = AV_CHANNEL_LAYOUT_STEREO;
        if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
            av_channel_layout_default(&from, channels_);
        else
            av_channel_layout_copy(&from, &frame.ch_layout);
        SwrContext* made = nullptr;
        swr_alloc_set_opts2(&made, &to, AV_SAMPLE_FMT_FLT, kAudioSampleRate, &from,
                            static_cast<AVSampleFormat>(format_), rate_, 0, nullptr);
        av_channel_layout_uninit(&from);
        resampler_.reset(made);
        if (!made) return;
        // Many channels are mixed down without going over full scale; one channel sounds full on both sides.
        av_opt_set_double(made, "rematrix_maxval", 1.0, 0);
        constexpr double kMonoToBoth[] = {1.0, 1.0};
        if (channels_ == 1) swr_set_matrix(made, kMonoToBoth, 1);
        if (swr_init(made) < 0) resampler_.reset();
    }

    std::unique_ptr<SwrContext, FreeResampler> resampler_;
    int format_ = AV_SAMPLE_FMT_NONE, rate_ = 0, channels_ = 0;
};

// Samples that a packet tells the decoder to drop: encoder delay at the start, padding at the end.
struct Dropped {
    int64_t atStart = 0, atEnd = 0;
};

Dropped droppedBy(const AVPacket& packet) {
    size_t size = 0;
    const uint8_t* data = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    if (!data || size < 8) return {};
    return {AV_RL32(data), AV_RL32(data + 4)};
}

}  // namespace

namespace {

/// What is heard of a track, in sample frames at kAudioSampleRate.
struct Extent {
    int64_t silence = 0;  ///< until it begins, where the pictures of a film begin earlier
    int64_t passed = 0;   ///< of it, where they begin later
    int64_t heard = 0;    ///< of it, after that
};

}  // namespace

struct AudioFile::Implementation {
    FileHandle file;
    std::string name;
    ErrorKind kind;
    Extent extent;
};

namespace {

// From the first packet that is heard to the end of the last one: exact and much faster than decoding.
Extent measure(PacketReader& packets) {
    const AVRational ticks = packets.stream().time_base;
    const AVRational samples{1, std::max(packets.stream().codecpar->sample_rate, 1)};
    const int64_t most = limitOf<int64_t>("maxSoundSeconds") * samples.den;
    std::optional<int64_t> start;
    int64_t end = 0;
    while (const AVPacket* packet = packets.next()) {
        const Dropped dropped = droppedBy(*packet);
        const int64_t begin = packet->pts == AV_NOPTS_VALUE ? end : av_rescale_q(packet->pts, ticks, samples);
        // Sound before time 0 only warms the decoder up.
        if (!start && !(packet->flags & AV_PKT_FLAG_DISCARD))
            start = std::max<int64_t>(begin + dropped.atStart, 0);
        const int64_t padding = packets.lengthsExcludePadding() ? 0 : dropped.atEnd;
        end = std::max(end, begin + av_rescale_q(packet->duration, ticks, samples) - padding);
        if (start && end - *start >= most) {
            end = *start + most;
            break;
        }
    }
    const auto frames = [&](int64_t count) { return av_rescale_q(count, samples, {1, kAudioSampleRate}); };
    const int64_t begin = start.value_or(end), length = std::clamp<int64_t>(end - begin, 0, most);
    // Sound after the longest that a file may have is not heard, nor is what ends before the first picture.
    const auto pictures = packets.pictureStart();
    const int64_t shown = pictures ? av_rescale_q(*pictures, ticks, samples) : begin;
    const int64_t lead = std::clamp(saturatingDifference(begin, shown), -length, most - length);
    Extent extent;
    extent.silence = frames(std::max<int64_t>(lead, 0));
    extent.passed = frames(std::max<int64_t>(-lead, 0));
    extent.heard = frames(length) - extent.passed;
    return extent;
}

}  // namespace

AudioFile::AudioFile(FileHandle file, const std::string& name, ErrorKind kind)
    : implementation_(std::make_unique<Implementation>()) {
    Implementation& self = *implementation_;
    self.file = std::move(file);
    self.name = name;
    self.kind = kind;
    PacketReader packets(self.file, name, kind);
    requireUsual(*packets.stream().codecpar, name, kind);
    ffmpeg::openDecoder(packets.stream(), name, kind);
    self.extent = measure(packets);
    if (self.extent.heard <= 0) throw Error(kind, "holds no sound that can be decoded", name);
}

AudioFile::~AudioFile() = default;

const std::string& AudioFile::name() const { return implementation_->name; }
int64_t AudioFile::frameCount() const {
    return implementation_->extent.silence + implementation_->extent.heard;
}

struct AudioFile::Reader::Implementation {
    explicit Implementation(const AudioFile::Implementation& file)
        : packets(file.file, file.name, file.kind),
          codec(ffmpeg::openDecoder(packets.stream(), file.name, file.kind)),
          frame(ffmpeg::newFrame()),
          silence(file.extent.silence),
          remaining(file.extent.passed + file.extent.heard) {
        decode(nullptr, file.extent.passed);
    }

    /// The next of the track, or nowhere; returns how many there were.
    int64_t decode(float* out, int64_t frames) {
        frames = std::min(frames, remaining);
        int64_t done = 0;
        while (done < frames) {
            if (available() == 0) {
                if (!fill()) break;
                continue;
            }
            const int64_t now = std::min(available(), frames - done);
            const size_t count = static_cast<size_t>(now) * kAudioChannels;
            if (out) std::memcpy(out + done * kAudioChannels, samples.data() + used, count * sizeof(float));
            used += count;
            done += now;
        }
        remaining -= done;
        return done;
    }

    int64_t available() const { return static_cast<int64_t>(samples.size() - used) / kAudioChannels; }

    /// Decodes some more; false at the end.
    bool fill() {
        if (isAtEnd) return false;
        samples.erase(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(used));
        used = 0;
        const AVPacket* packet = packets.next();
        // A packet that cannot be decoded is passed over.
        avcodec_send_packet(codec.get(), packet);
        while (avcodec_receive_frame(codec.get(), frame.get()) >= 0) resampler.convert(frame.get(), samples);
        if (packet) return true;
        isAtEnd = true;
        resampler.convert(nullptr, samples);
        return available() > 0;
    }

    PacketReader packets;
    ffmpeg::Codec codec;
    ffmpeg::Frame frame;
    Resampler resampler;
    std::vector<float> samples;
    size_t used = 0;  ///< of `samples`
    bool isAtEnd = false;
    int64_t silence;    ///< still before the track
    int64_t remaining;  ///< of the file's length: the last packet may be padded beyond it
};

AudioFile::Reader::Reader(const AudioFile& file)
    : implementation_(std::make_unique<Implementation>(*file.implementation_)) {}
AudioFile::Reader::~Reader() = default;
AudioFile::Reader::Reader(Reader&&) noexcept = default;
AudioFile::Reader& AudioFile::Reader::operator=(Reader&&) noexcept = default;

int64_t AudioFile::Reader::read(float* samples, int64_t frames) {
    Implementation& self = *implementation_;
    const int64_t silent = std::clamp<int64_t>(frames, 0, self.silence);
    self.silence -= silent;
    if (samples) {
        std::fill_n(samples, silent * kAudioChannels, 0.0f);
        samples += silent * kAudioChannels;
    }
    return silent + self.decode(samples, frames - silent);
}

void AudioFile::Reader::skip(int64_t frames) { read(nullptr, frames); }

}  // namespace platform
