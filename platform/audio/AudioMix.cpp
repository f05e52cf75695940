#include "platform/audio/AudioMix.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "platform/media/Ffmpeg.h"
#include "platform/media/Mp4Muxer.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mathematics.h>
}

namespace platform {

namespace {

constexpr int64_t kBlockFrames = 1024;
using Block = std::array<float, kBlockFrames * kAudioChannels>;

int64_t framesOf(const CMTime& time) {
    if (time.timescale <= 0) return 0;
    return av_rescale_rnd(time.value, kAudioSampleRate, time.timescale, AV_ROUND_NEAR_INF);
}

void addOnto(float* sum, const float* samples, int64_t frames) {
    for (int64_t i = 0; i < frames * kAudioChannels; ++i) sum[i] += samples[i];
}

/// A piece of a file on the timeline. Its decoder exists only while it sounds.
class Piece {
  public:
    explicit Piece(const AudioInsertion& insertion)
        : insertion_(&insertion),
          start_(framesOf(insertion.at)),
          end_(start_ + std::max<int64_t>(framesOf(insertion.duration), 0)) {}

    int64_t start() const { return start_; }
    int64_t end() const { return end_; }

    /// Adds what sounds from `frame` on to `sum`. Called for one block after another.
    void addTo(float* sum, int64_t frame, int64_t frames) {
        const int64_t from = std::max(frame, start_), to = std::min(frame + frames, end_);
        if (from >= to) return;
        if (!reader_) open(from);
        Block samples;
        const int64_t got = reader_->read(samples.data(), to - from);
        addOnto(sum + (from - frame) * kAudioChannels, samples.data(), got);
    }

  private:
    void open(int64_t frame) {
        reader_.emplace(*insertion_->file);
        reader_->skip(framesOf(insertion_->sourceStart) + frame - start_);
    }

    const AudioInsertion* insertion_;
    int64_t start_, end_;
    std::optional<AudioFile::Reader> reader_;
};

/// One track: its pieces in the order of their starts, and those of them that sound at the moment.
class TrackMixer {
  public:
    explicit TrackMixer(const AudioTrack& track) : volume_(track.volume) {
        for (const AudioInsertion& insertion : track.insertions) waiting_.emplace_back(insertion);
        std::stable_sort(waiting_.begin(), waiting_.end(),
                         [](const Piece& a, const Piece& b) { return a.start() > b.start(); });
        for (const Piece& piece : waiting_) end_ = std::max(end_, piece.end());
    }

    int64_t end() const { return end_; }

    void addTo(float* sum, int64_t frame, int64_t frames) {
        for (; !waiting_.empty() && waiting_.back().start() < frame + frames; waiting_.pop_back())
            sounding_.push_back(std::move(waiting_.back()));
        if (sounding_.empty()) return;
        Block samples{};
        for (Piece& piece : sounding_) piece.addTo(samples.data(), frame, frames);
        std::erase_if(sounding_, [&](const Piece& piece) { return piece.end() <= frame + frames; });
        volume_.apply(samples.data(), frame, frames);
        addOnto(sum, samples.data(), frames);
    }

  private:
    const VolumeEnvelope& volume_;
    std::vector<Piece> waiting_;  ///< the next one last
    std::vector<Piece> sounding_;
    int64_t end_ = 0;
};

/// AAC into an M4A file.
class AacWriter {
  public:
    AacWriter(const std::filesystem::path& output, const AudioMixSettings& settings)
        : file_(output.string()),
          muxer_({.path = output, .format = "ipod"}),
          frame_(ffmpeg::newFrame()),
          packet_(ffmpeg::newPacket()) {
        open(settings);
        muxer_.addStream(*ffmpeg::parametersOf(*codec_), 1, kAudioSampleRate);
        muxer_.begin();
    }

    void write(const float* samples, int64_t frames) {
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

    void finish() {
        submit(nullptr);
        muxer_.finish();
    }

  private:
    void check(int code) const { ffmpeg::check(code, "cannot encode the sound", file_); }

    void open(const AudioMixSettings& settings) {
        const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
        if (!encoder) throw Error(ErrorKind::Failed, "there is no AAC encoder");
        codec_.reset(avcodec_alloc_context3(encoder));
        if (!codec_) throw Error(ErrorKind::Transient, "out of memory");
        codec_->sample_fmt = AV_SAMPLE_FMT_FLTP;
        codec_->sample_rate = kAudioSampleRate;
        codec_->time_base = {1, kAudioSampleRate};
        codec_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        codec_->bit_rate = settings.bitRate;
        codec_->flags |= AV_CODEC_FLAG_BITEXACT | AV_CODEC_FLAG_GLOBAL_HEADER;
        check(avcodec_open2(codec_.get(), encoder, nullptr));
        frame_->format = codec_->sample_fmt;
        frame_->sample_rate = kAudioSampleRate;
        frame_->nb_samples = static_cast<int>(kBlockFrames);
        frame_->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        check(av_frame_get_buffer(frame_.get(), 0));
    }

    void submit(const AVFrame* frame) {
        check(avcodec_send_frame(codec_.get(), frame));
        while (avcodec_receive_packet(codec_.get(), packet_.get()) >= 0) muxer_.write(*packet_, 0);
    }

    const std::string file_;
    ffmpeg::Mp4Muxer muxer_;
    ffmpeg::Codec codec_;
    ffmpeg::Frame frame_;
    ffmpeg::Packet packet_;
    int64_t position_ = 0;
};

}  // namespace

struct AudioMixer::Implementation {
    explicit Implementation(const AudioTimeline& timeline) : masterVolume(timeline.masterVolume) {
        for (const AudioTrack& track : timeline.tracks) tracks.emplace_back(track);
        frameCount = framesOf(timeline.duration);
        if (frameCount > 0) return;
        for (const TrackMixer& track : tracks) frameCount = std::max(frameCount, track.end());
    }

    void mix(float* samples, int64_t frames) {
        std::fill_n(samples, frames * kAudioChannels, 0.0f);
        for (TrackMixer& track : tracks) track.addTo(samples, position, frames);
        masterVolume.apply(samples, position, frames);
        for (int64_t i = 0; i < frames * kAudioChannels; ++i)
            samples[i] = std::clamp(samples[i], -1.0f, 1.0f);
        position += frames;
    }

    const VolumeEnvelope& masterVolume;
    std::vector<TrackMixer> tracks;
    int64_t frameCount = 0, position = 0;
};

AudioMixer::AudioMixer(const AudioTimeline& timeline)
    : implementation_(std::make_unique<Implementation>(timeline)) {}
AudioMixer::~AudioMixer() = default;

int64_t AudioMixer::frameCount() const { return implementation_->frameCount; }

int64_t AudioMixer::read(float* samples, int64_t frames) {
    Implementation& self = *implementation_;
    int64_t done = 0;
    while (done < frames && self.position < self.frameCount) {
        const int64_t now = std::min({frames - done, self.frameCount - self.position, kBlockFrames});
        self.mix(samples + done * kAudioChannels, now);
        done += now;
    }
    return done;
}

void writeAudioMix(const AudioTimeline& timeline, const std::filesystem::path& output,
                   const AudioMixSettings& settings, std::stop_token stop) {
    AudioMixer mixer(timeline);
    if (mixer.frameCount() == 0) throw Error(ErrorKind::Failed, "there is no sound to mix");
    AacWriter writer(output, settings);
    Block samples;
    while (const int64_t frames = mixer.read(samples.data(), kBlockFrames)) {
        if (stop.stop_requested()) throw Error(ErrorKind::Cancelled, "cancelled");
        writer.write(samples.data(), frames);
    }
    writer.finish();
}

}  // namespace platform
