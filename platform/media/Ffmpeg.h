// Private to platform/media and platform/audio: owning handles over the FFmpeg libraries, their errors, and
// the fenced opening of files. Names the libraries' types without including them.
#pragma once

#include <memory>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/File.h"

struct AVCodecContext;
struct AVCodecParameters;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

namespace platform::ffmpeg {

struct Release {
    void operator()(AVFormatContext* input) const;
    void operator()(AVCodecContext* codec) const;
    void operator()(AVCodecParameters* parameters) const;
    void operator()(AVFrame* frame) const;
    void operator()(AVPacket* packet) const;
};
/// An opened file to read.
using Input = std::unique_ptr<AVFormatContext, Release>;
using Codec = std::unique_ptr<AVCodecContext, Release>;
using Parameters = std::unique_ptr<AVCodecParameters, Release>;
using Frame = std::unique_ptr<AVFrame, Release>;
using Packet = std::unique_ptr<AVPacket, Release>;

/// Throw Error(Transient) when there is no memory.
Frame newFrame();
Packet newPacket();
/// What a file must say about the stream that an opened encoder makes.
Parameters parametersOf(const AVCodecContext& encoder);

/// Routes the libraries' messages to our log and caps what they ask for at once. Called by everything that
/// opens or writes.
void prepare();

/// The error behind a negative result of the libraries; a full disk or lack of memory is Transient.
Error error(int code, const std::string& action, const std::string& file, ErrorKind kind);
/// Throws error(…) when `code` is negative; else gives it back.
int check(int code, const std::string& action, const std::string& file, ErrorKind kind = ErrorKind::Failed);

/// What a file may hold, which decides the formats that are tried.
enum class Content { Video, Audio };

/// Opens `path` by the file protocol alone and only in one of the formats for `content`; reads enough to know
/// its streams. `name` stands for it in messages. Throws Error(kind).
Input openInput(const std::string& path, Content content, const std::string& name, ErrorKind kind);

/// Reads the next packet of any stream: av_read_frame()'s answer. The libraries take a disk that fails for
/// the end of the file: that is thrown as an Error(Transient).
int readPacket(AVFormatContext& input, AVPacket& packet, const std::string& name);

/// Pictures that move; a cover is none.
bool isFilm(const AVStream* stream);

/// The first stream of that content (cover pictures do not count); all others are switched off. Throws
/// Error(kind) when there is none.
AVStream& selectStream(AVFormatContext& input, Content content, const std::string& name, ErrorKind kind);

/// Its pictures may be transparent in places: a pixel format with alpha, or VP8 and VP9 with a second picture
/// of alpha in each packet.
bool hasAlpha(const AVStream& stream);

/// How long a picture is shown whose packet does not say, in ticks of the stream; at least 1.
int64_t usualDuration(const AVStream& stream);

/// A decoder on one thread: its work is counted on, and runs beside, the thread that calls it.
Codec openDecoder(const AVStream& stream, const std::string& name, ErrorKind kind, int threads = 1);

}  // namespace platform::ffmpeg
