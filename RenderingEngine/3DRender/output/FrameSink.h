// Where finished frames go: a video file, pictures, a window. Without a sink nothing is drawn. Glossary:
// "canle" is cancel.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "platform/base/Error.h"
#include "platform/pixels/Surface.h"

namespace multiscene {

/// Owned by the render driver. Operations are called on the render queue, except where another thread is
/// named.
class FrameSink {
  public:
    virtual ~FrameSink() = default;

    virtual int32_t width() const = 0;   ///< pixels, never changes; any thread
    virtual int32_t height() const = 0;  ///< pixels, never changes; any thread

    /// Where the next frame is to be drawn, all of it: memory of the sink's size, until renderFrameToVideo().
    virtual platform::Canvas frameCanvas() = 0;

    /// True when the next frame can be taken at once. Any thread.
    virtual bool isOkCaptureScreenVideo() const = 0;
    /// Waits until isOkCaptureScreenVideo() holds, the sink has ended, or wake() is called; tells whether it
    /// holds.
    virtual bool waitUntilOk() = 0;
    /// Ends a waitUntilOk() that is under way. Any thread.
    virtual void wake() {}
    /// Why the sink takes no more frames, whatever the reason; nothing while it does. Any thread.
    virtual std::optional<platform::Error> failure() const { return std::nullopt; }

    /// False when nobody looks at the next frame; it is then not drawn, but for what later frames may show of
    /// it, and skipFrame() is called instead of renderFrameToVideo().
    virtual bool wantsNextFrame() const { return true; }
    /// Takes the frame: its colours are multiplied by alpha as blending over nothing leaves them.
    virtual void renderFrameToVideo() = 0;
    /// The frame was not drawn.
    virtual void skipFrame() {}
    /// Asked after each frame: whether the same one is to be drawn again, because what it shows has changed.
    /// May wait until that is known; wake() ends the waiting.
    virtual bool wantsFrameAgain() { return false; }

    /// The group has played to its end: complete what is being made. Any thread.
    virtual void finishExport() {}
    /// The user has stopped the group: give up what is being made. Any thread.
    virtual void canleExport() {}

    /// The driver stops for its exportPauseSeconds after each frame.
    virtual bool isExport() const { return true; }
    /// A new sink of the same settings, for a run that starts again from the first frame; none when this one
    /// can go on. Any thread.
    virtual std::shared_ptr<FrameSink> freshSink() { return nullptr; }
};

}  // namespace multiscene
