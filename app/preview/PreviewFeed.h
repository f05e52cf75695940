// The window's half of a preview: what a worker draws and mixes for it.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/base/SharedMemory.h"
#include "platform/fence/Channel.h"
#include "platform/pixels/Surface.h"

namespace multiscene {

/// What is played.
struct PreviewVideo {
    std::string name, findings;
    int width = 0, height = 0, framesPerSecond = 30;
    int64_t frames = 0;  ///< below 1: not known
};

/// A frame that is there.
struct PreviewPicture {
    int64_t frame = -1;
    int slot = 0;
    platform::Surface pixels;
    std::shared_ptr<platform::SharedMemory> memory;  ///< that they lie in
    double milliseconds = 0, decode = 0, update = 0, draw = 0, paint = 0;
};

/// Talks with one worker. The worker is not trusted: what it says is taken for numbers and text, its pictures
/// for pixels. One thread, which never waits; the worker is heard on a thread of its own.
class PreviewFeed {
  public:
    /// Called on the listening thread.
    using SoundListener = std::function<void(int64_t from, const float* samples, int64_t frames)>;

    /// What the worker has said since the last time.
    struct News {
        std::optional<PreviewVideo> opened;
        std::optional<std::string> refused;  ///< why what was to be opened or drawn is not
        std::optional<PreviewPicture> picture;
        std::optional<int64_t> frames;  ///< how many there are, as it turned out
        bool isGone = false;            ///< there will be no more
    };

    PreviewFeed(platform::FileHandle connection, SoundListener listener);
    ~PreviewFeed();

    News take();
    /// Has a frame drawn into a slot; in place of the one that is being drawn, if any.
    void askPicture(int64_t frame, int slot);
    void askSound(int64_t from, int64_t frames);
    void askOpen();
    void close();

    /// What is on its way is not wanted any more.
    void dropAsked() { dropped_ = serial_; }
    /// Whether something that is wanted is on its way.
    bool isAsked() const { return !asked_.empty() && asked_.rbegin()->first > dropped_; }
    /// Slots that the worker may be drawing into.
    bool isInUse(int slot) const;

  private:
    void listen();
    void hear(platform::Message& message);
    void hearOpened(const platform::Message& message);
    void hearShown(const platform::Message& message);
    void hearSound(const platform::Message& message);

    platform::Channel channel_;
    const SoundListener listener_;
    std::map<int64_t, int> asked_;  ///< slots by the serials of what is on its way
    int64_t serial_ = 0, dropped_ = 0;

    struct Drawn {
        int64_t serial;
        bool isShown;
        PreviewPicture picture;
    };
    std::mutex mutex_;
    News news_;
    std::deque<Drawn> drawn_;
    std::shared_ptr<platform::SharedMemory> memory_;
    int width_ = 0, height_ = 0;
    std::thread thread_;
};

}  // namespace multiscene
