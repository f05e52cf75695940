// Writes rendered frames into a silent H.264 MP4 file. Conversion and encoding run on a thread of the
// writer's own, behind a short queue; the caller draws the next frame meanwhile.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/Error.h"
#include "platform/media/PixelBuffer.h"

namespace platform {

class VideoWriter {
  public:
    struct Settings {
        std::filesystem::path path;       ///< replaced when it exists; removed again on failure and cancel
        int width = 0, height = 0;        ///< pixels, even, 2 to 16384
        int framesPerSecond = 0;          ///< 1 to 1000; also the timescale of the presentation times
        int bitRate = 1500000;            ///< average, bits a second
        std::string preset = "veryfast";  ///< one of presets()
        /// Part of the settings and never taken from the machine, so that every machine writes the same
        /// bytes.
        int threads = 3;
        bool optimiseForNetworkUse = false;  ///< the index goes to the front of the file
    };

    /// Goes one way: Writing, then one of the others for good.
    enum class State { Writing, Completed, Failed, Cancelled };

    struct Statistics {
        int64_t frames = 0;         ///< pictures encoded
        double convertSeconds = 0;  ///< CPU seconds spent on colour conversion
        double encodeSeconds = 0;  ///< CPU seconds of the encoder and all its threads, and of the file format
    };

    /// The preset names the encoder knows, fastest first, separated by a blank.
    static std::string presets();

    /// Opens the encoder and creates the file. Throws Error: Usage for settings out of range, Transient for a
    /// full disk, else Failed.
    explicit VideoWriter(const Settings& settings);
    /// Cancels a writer that was not finished.
    ~VideoWriter();
    VideoWriter(const VideoWriter&) = delete;
    VideoWriter& operator=(const VideoWriter&) = delete;

    const Settings& settings() const;

    /// A buffer of the video's size to fill and append. Buffers are recycled; their content is undefined.
    PixelBufferPool::Pointer takeBuffer();

    /// True while writing and the queue has room, so that append() would not block. Any thread.
    bool isReadyForMoreMediaData() const;
    /// Blocks until isReadyForMoreMediaData() holds, and then gives true; false as soon as the writer was
    /// finished, failed or was cancelled, and when wakeWaiters() is called.
    bool waitUntilReady();
    /// Ends the calls of waitUntilReady() that are under way: their caller has something else to do. Any
    /// thread.
    void wakeWaiters();

    /// Queues one picture; its buffer comes back by itself. `presentationTime` counts in 1/framesPerSecond
    /// and must rise with every picture; the first time is kept as it is, also when it is not 0. Blocks while
    /// the queue is full. False when the writer is not Writing any more; the picture is then dropped.
    bool append(PixelBufferPool::Pointer picture, int64_t presentationTime);

    /// Encodes what is queued and completes the file; returns the state reached. May be called again.
    State finish();
    /// Drops what is queued and wakes everybody who waits, without waiting itself; the file is gone when
    /// finish() or the destructor returns. Any thread; does nothing once another final state is reached.
    void cancel();

    State state() const;
    /// Why the state is Failed. A full disk is Transient.
    std::optional<Error> error() const;
    /// Complete once a final state is reached.
    Statistics statistics() const;

  private:
    class Implementation;
    std::unique_ptr<Implementation> implementation_;
};

}  // namespace platform
