// Pictures that scenes will show, made before they are shown.
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/base/FileGate.h"
#include "platform/image/Image.h"

namespace multiscene {

/// A picture as it is sampled; empty when it cannot be read.
struct PictureOnCanvas {
    platform::Bitmap bitmap;
    platform::ImageSize source;  ///< of the picture behind it, pixels
};

/// Makes pictures on a thread of its own, in the order in which they are expected, as long as few are waiting
/// to be taken. Who takes one that is not begun, or that failed, makes it himself: what is shown and what is
/// told never depends on how far the thread is, and of a picture that nobody takes nothing is told. Any
/// thread.
class PicturesAhead {
  public:
    /// Runs on either thread, and opens files through the given gate only.
    using Make = std::function<PictureOnCanvas(platform::FileGate&)>;

    /// Files are opened as `gate` allows; it is told of refusals when the picture is taken.
    explicit PicturesAhead(platform::FileGate& gate) : gate_(gate) {}
    /// Waits for the picture that is being made.
    ~PicturesAhead();
    PicturesAhead(const PicturesAhead&) = delete;
    PicturesAhead& operator=(const PicturesAhead&) = delete;

    /// `name` says all that the picture depends on; one that is expected twice is made twice. `scene` is who
    /// will take it: when it is gone, what it has not taken is dropped.
    void expect(std::weak_ptr<const void> scene, std::string name, Make make);
    /// The picture of that name, expected or not.
    PictureOnCanvas take(const std::string& name, const Make& make);

  private:
    enum class State { Waiting, Making, Made };
    struct Expected {
        std::weak_ptr<const void> scene;
        std::string name;
        Make make;
        State state = State::Waiting;
        PictureOnCanvas picture{};  ///< empty also when it failed
    };

    void start();
    PictureOnCanvas tried(const Make& make) const;
    void run();
    /// None when there is none, or no room.
    Expected* next();

    platform::FileGate& gate_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::list<Expected> expected_;
    bool isOver_ = false;
    std::thread thread_;  ///< started by the first that is expected
};

}  // namespace multiscene
