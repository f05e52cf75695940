#include "platform/media/VideoReader.h"

#include <algorithm>
#include <mutex>
#include <thread>

#include "platform/base/Clock.h"
#include "platform/media/BoundedQueue.h"
#include "platform/media/PictureConverter.h"
#include "platform/media/PicturesByTime.h"
#include "platform/media/ThreadCpu.h"
#include "platform/media/VideoDecoder.h"

namespace platform {

class VideoReader::Implementation {
  public:
    Implementation(const FileHandle& file, const std::string& name, ErrorKind kind, const Settings& wanted)
        : decoder(file, name, kind),
          settings(wanted),
          converter({decoder.orientation(), settings.shape,
                     decoder.info().hasAlpha && settings.premultipliesAlpha}),
          info(decoder.info()),
          queue(static_cast<size_t>(std::max(settings.framesAhead, 1))) {
        const CropSize size = cropSize(info.width, info.height, settings.shape);
        info.width = size.width;
        info.height = size.height;
    }
    ~Implementation() {
        queue.abort();
        if (thread.joinable()) thread.join();
    }

    void start() {
        const std::lock_guard lock(startMutex);
        if (!thread.joinable()) thread = std::thread([this] { run(); });
    }

    const VideoInfo& fileInfo() const { return info; }
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
            settings.framesPerSecond > 0 ? deliverByTime() : deliverEach();
            if (decoder.error()) note(*decoder.error());
        } catch (const Error& caught) {
            note(caught);
        } catch (const std::exception& caught) {
            note(Error(ErrorKind::Transient, caught.what()));
        }
        queue.close();
    }

    /// Adds the CPU time of `work` to a counter.
    template <typename Work>
    auto timed(double& counter, Work work) {
        const double begin = threadCpuSeconds();
        auto result = work();
        const std::lock_guard lock(mutex);
        counter += threadCpuSeconds() - begin;
        return result;
    }

    void deliverEach() {
        while (timed(counters.decodeSeconds, [&] { return decoder.next(); })) {
            countPicture();
            if (!queue.push(converted(decoder.picture(), decoder.time()))) return;
        }
    }

    void deliverByTime() {
        auto pictures =
            timed(counters.decodeSeconds, [&] { return PicturesByTime(decoder, settings.framesPerSecond); });
        VideoFrame frame;
        while (timed(counters.decodeSeconds, [&] { return pictures.next(); })) {
            if (!pictures.isShownAgain()) {
                countPicture();
                frame = converted(pictures.picture(), pictures.time());
            }
            frame.time = pictures.time();
            if (!queue.push(frame)) return;
        }
    }

    VideoFrame converted(const AVFrame& picture, const CMTime& time) {
        return timed(counters.convertSeconds, [&] { return VideoFrame{converter.convert(picture), time}; });
    }

    void countPicture() {
        const std::lock_guard lock(mutex);
        ++counters.frames;
    }

    void note(const Error& caught) {
        const std::lock_guard lock(mutex);
        failure = caught;
    }

    VideoDecoder decoder;
    const Settings settings;
    PictureConverter converter;
    VideoInfo info;
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

const VideoInfo& VideoReader::info() const { return implementation_->fileInfo(); }

void VideoReader::start() { implementation_->start(); }

std::optional<VideoFrame> VideoReader::nextFrame() {
    implementation_->start();
    return implementation_->frames().pop();
}

void VideoReader::cancel() { implementation_->frames().abort(); }

std::optional<Error> VideoReader::error() const { return implementation_->error(); }

VideoReader::Statistics VideoReader::statistics() const { return implementation_->statistics(); }

}  // namespace platform
