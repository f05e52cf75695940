// Decodes the first sound track of a file, whatever its format, to one fixed form.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/CMTime.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"

namespace platform {

/// The one form in which sound is handled: interleaved stereo, 32-bit floats from -1 to 1, at this rate (Hz).
inline constexpr int kAudioSampleRate = 44100;
inline constexpr int kAudioChannels = 2;

/// A sound file, opened once and decoded as often as wanted. Encoder delay and padding are cut off where the
/// file tells them. A film's sound begins with its first picture: with silence where the track begins later,
/// without what is heard before it. The file protocol alone and a fixed list of formats are accepted (WAV,
/// AIFF, MP3, FLAC, Ogg, AAC, MP4/M4A/MOV, Matroska/WebM, AVI, MPEG-TS); a playlist is refused and opens
/// nothing. Objects are used by one thread at a time.
class AudioFile {
  public:
    /// Opens the file and measures it by reading through it without decoding; what goes beyond the length
    /// that a sound may have is left out. `name` stands for the file in messages; `kind` says whose file it
    /// is. Throws Error(kind) when there is no sound that can be decoded.
    AudioFile(FileHandle file, const std::string& name, ErrorKind kind = ErrorKind::Template);
    ~AudioFile();
    AudioFile(const AudioFile&) = delete;
    AudioFile& operator=(const AudioFile&) = delete;

    const std::string& name() const;
    /// Length in sample frames at kAudioSampleRate.
    int64_t frameCount() const;
    /// The same as a time.
    CMTime duration() const { return CMTimeMake(frameCount(), kAudioSampleRate); }

    /// Decodes from the start of the file. Each reader has its own position; the file must outlive it.
    class Reader {
      public:
        explicit Reader(const AudioFile& file);
        ~Reader();
        Reader(Reader&&) noexcept;
        Reader& operator=(Reader&&) noexcept;

        /// The next `frames` sample frames, interleaved; returns how many there were. Fewer than asked only
        /// at the end of what can be decoded. Never throws: what cannot be decoded ends the sound.
        int64_t read(float* samples, int64_t frames);
        /// Drops the next `frames` sample frames.
        void skip(int64_t frames);

      private:
        struct Implementation;
        std::unique_ptr<Implementation> implementation_;
    };

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace platform
