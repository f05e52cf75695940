#include "platform/media/VideoReader.h"

#include <algorithm>
#include <mutex>
#include <thread>

#include "platform/media/BoundedQueue.h"
#include "platform/media/PictureConverter.h"
#include "platform/media/ThreadCpu.h"
#include "platform/media/VideoDecoder.h"

namespace platform {

class VideoReader::Implementation {
  public:
    Implementation(const FileHandle& file, const std::string& name, ErrorKind kind, const Settings& settings)
        : decoder(file, name, kind),
          converter(settings.pixelOrder, decoder.orientation()),
          queue(static_cast<size_t>(std::max(settings.framesAhead, 1))) {}
    ~Implementation() {
        queue.abort();
        if (thread.joinable()) thread.join();
    }

    void start() {
        const std::lock_guard lock(startMutex);
        if (!thread.joinable()) thread = std::thread([this] { run(); });
    }

    VideoDecoder decoder;
    BoundedQueue<VideoFrame>& frames() { return queue; }

    std::optional<Error> error() const {
        const std::lock_guard lock(mutex);
        return failure;
    }
    Statistics statistics() const {
        const std::lock_guard lock(mutex);
        return counters;
    }

  private:
    void run() {
        nameThread("video-decode");
        try {
            while (std::optional<VideoFrame> frame = decodeOne())
                if (!queue.push(std::move(*frame))) return;
            if (decoder.error()) note(*decoder.error());
        } catch (const Error& caught) {
            note(caught);
        } catch (const std::exception& caught) {
            note(Error(ErrorKind::Transient, caught.what()));
        }
        queue.close();
    }

    std::optional<VideoFrame> decodeOne() {
        const double begin = threadCpuSeconds();
        const bool decoded = decoder.next();
        const double middle = threadCpuSeconds();
        VideoFrame frame{pool.take(0, 0), CMTime{}};
        if (decoded) {
            converter.convert(decoder.picture(), *frame.pixels);
            frame.time = decoder.time();
        }
        count(decoded, middle - begin, threadCpuSeconds() - middle);
        if (!decoded) return std::nullopt;
        return frame;
    }

    void count(bool decoded, double decodeSeconds, double convertSeconds) {
        const std::lock_guard lock(mutex);
        counters.frames += decoded;
        counters.decodeSeconds += decodeSeconds;
        counters.convertSeconds += convertSeconds;
    }

    void note(const Error& caught) {
        const std::lock_guard lock(mutex);
        failure = caught;
    }

    PictureConverter converter;
    PixelBufferPool pool;
    BoundedQueue<VideoFrame> queue;
    mutable std::mutex mutex;
    std::optional<Error> failure;
    Statistics counters;
    std::mutex startMutex;
    std::thread thread;
};

VideoReader::VideoReader(FileHandle file, const std::string& name, ErrorKind kind, const Settings& settings)
    : implementation_(std::make_unique<Implementation>(file, name, kind, settings)) {}

VideoReader::~VideoReader() = default;

const VideoInfo& VideoReader::info() const { return implementation_->decoder.info(); }

void VideoReader::start() { implementation_->start(); }

std::optional<VideoFrame> VideoReader::nextFrame() {
    implementation_->start();
    return implementation_->frames().pop();
}

void VideoReader::cancel() { implementation_->frames().abort(); }

std::optional<Error> VideoReader::error() const { return implementation_->error(); }

VideoReader::Statistics VideoReader::statistics() const { return implementation_->statistics(); }

}  // namespace platform
