#include "platform/media/VideoWriter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <string_view>
#include <thread>

#include "platform/base/Activity.h"
#include "platform/media/BoundedQueue.h"
#include "platform/media/H264Encoder.h"
#include "platform/media/ThreadCpu.h"

namespace platform {

namespace {

constexpr size_t kQueuedPictures = 3;
constexpr std::array kPresets{"ultrafast", "superfast", "veryfast", "faster",  "fast",
                              "medium",    "slow",      "slower",   "veryslow"};

bool isIn(int value, int least, int most) { return value >= least && value <= most; }

void validate(const VideoWriter::Settings& settings) {
    const auto refuse = [](const std::string& message) { throw Error(ErrorKind::Usage, message); };
    const std::string size = std::to_string(settings.width) + "x" + std::to_string(settings.height);
    if (!isIn(settings.width, 2, 16384) || !isIn(settings.height, 2, 16384))
        refuse("a video of " + size + " pixels cannot be written: each side is 2 to 16384");
    if (settings.width % 2 != 0 || settings.height % 2 != 0)
        refuse("a video of " + size + " pixels cannot be written: each side must be even");
    if (!isIn(settings.framesPerSecond, 1, 1000)) refuse("the frame rate must be 1 to 1000 a second");
    if (settings.bitRate < 1000) refuse("the bit rate must be 1000 bits a second or more");
    if (!isIn(settings.threads, 1, 64)) refuse("the encoder takes 1 to 64 threads");
    if (std::find(kPresets.begin(), kPresets.end(), settings.preset) == kPresets.end())
        refuse("unknown preset \"" + settings.preset + "\"; there are: " + VideoWriter::presets());
}

}  // namespace

class VideoWriter::Implementation {
  public:
    explicit Implementation(const Settings& given) : settings(given), queue(kQueuedPictures) {
        thread = std::thread([this] { run(); });
    }
    ~Implementation() {
        cancel();
        join();
    }

    void waitUntilOpen() {
        std::unique_lock lock(mutex);
        opened.wait(lock, [&] { return isOpen || state != State::Writing; });
        if (error) throw Error(*error);
    }

    void cancel() {
        moveTo(State::Cancelled);
        if (currentState() != State::Completed) queue.abort();
    }

    void join() {
        const std::lock_guard lock(joinMutex);
        if (thread.joinable()) thread.join();
    }

    State currentState() const {
        const std::lock_guard lock(mutex);
        return state;
    }

    const Settings settings;
    PixelBufferPool pool;
    struct Picture {
        PixelBufferPool::Pointer pixels;
        int64_t presentationTime;
    };
    BoundedQueue<Picture> queue;

    mutable std::mutex mutex;
    std::condition_variable opened;
    bool isOpen = false;
    State state = State::Writing;
    std::optional<Error> error;
    Statistics statistics;

  private:
    void run() {
        try {
            encodeAll();
        } catch (const Error& failure) {
            fail(failure);
        } catch (const std::exception& failure) {
            fail(Error(ErrorKind::Transient, failure.what(), settings.path.string()));
        }
        queue.abort();
    }

    void encodeAll() {
        // The encoder's threads inherit the name, by which their CPU time is found.
        static std::atomic<unsigned> writers{0};
        const std::string name = "h264-write-" + std::to_string(writers++ % 1000);
        nameThread(name);
        H264Encoder encoder(settings);
        announceOpen();
        int64_t frames = 0;
        while (std::optional<Picture> picture = queue.pop()) {
            encoder.encode(*picture->pixels, picture->presentationTime);
            ++frames;
        }
        if (currentState() == State::Writing) complete(encoder, frames);
        record(encoder, frames, cpuSecondsOfThreadsNamed(name));
    }

    void complete(H264Encoder& encoder, int64_t frames) {
        if (frames == 0) throw Error(ErrorKind::Failed, "no picture was written", settings.path.string());
        encoder.finish();
        moveTo(State::Completed);
        std::error_code ignored;
        if (currentState() != State::Completed) std::filesystem::remove(settings.path, ignored);
    }

    void announceOpen() {
        {
            const std::lock_guard lock(mutex);
            isOpen = true;
        }
        opened.notify_all();
    }

    void fail(const Error& failure) {
        {
            const std::lock_guard lock(mutex);
            if (state == State::Writing) {
                state = State::Failed;
                error = failure;
            }
        }
        opened.notify_all();
    }

    void moveTo(State next) {
        const std::lock_guard lock(mutex);
        if (state == State::Writing) state = next;
    }

    void record(const H264Encoder& encoder, int64_t frames, double cpuSeconds) {
        const std::lock_guard lock(mutex);
        statistics.frames = frames;
        statistics.convertSeconds = encoder.convertSeconds();
        statistics.encodeSeconds = cpuSeconds - encoder.convertSeconds();
    }

    std::mutex joinMutex;
    std::thread thread;
};

std::string VideoWriter::presets() {
    std::string names;
    for (const std::string_view name : kPresets) names += (names.empty() ? "" : " ") + std::string(name);
    return names;
}

VideoWriter::VideoWriter(const Settings& settings) {
    validate(settings);
    implementation_ = std::make_unique<Implementation>(settings);
    implementation_->waitUntilOpen();
}

VideoWriter::~VideoWriter() = default;

const VideoWriter::Settings& VideoWriter::settings() const { return implementation_->settings; }

PixelBufferPool::Pointer VideoWriter::takeBuffer() {
    return implementation_->pool.take(settings().width, settings().height);
}

bool VideoWriter::isReadyForMoreMediaData() const { return implementation_->queue.hasRoom(); }
bool VideoWriter::waitUntilReady() { return implementation_->queue.waitForRoom(); }
void VideoWriter::wakeWaiters() { implementation_->queue.wakeWaiters(); }

bool VideoWriter::append(PixelBufferPool::Pointer picture, int64_t presentationTime) {
    activity::sign();
    return implementation_->queue.push({std::move(picture), presentationTime});
}

VideoWriter::State VideoWriter::finish() {
    implementation_->queue.close();
    implementation_->join();
    return state();
}

void VideoWriter::cancel() { implementation_->cancel(); }

VideoWriter::State VideoWriter::state() const { return implementation_->currentState(); }

std::optional<Error> VideoWriter::error() const {
    const std::lock_guard lock(implementation_->mutex);
    return implementation_->error;
}

VideoWriter::Statistics VideoWriter::statistics() const {
    const std::lock_guard lock(implementation_->mutex);
    return implementation_->statistics;
}

}  // namespace platform
