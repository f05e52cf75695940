// The on-screen view of a preview, as the driver sees it. Glossary: "VIew" is view.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "output/FrameSink.h"
#include "platform/pixels/FrameLayout.h"

namespace multiscene {

/// Takes the frames that somebody asks for, one at a time and each as the export would have it, and holds the
/// driver's loop up between them: whoever shows the frames keeps the time, no clock of a scene does. Frames
/// on the way to the one asked for are played without being drawn. A run that starts again begins at frame 0.
///
/// Who asks is one thread; the frames come on the render queue.
class QVMorrow3DGLVIew : public FrameSink {
  public:
    /// Pixels of the view a point of the screen: those of a screen of scale 2; every other scale, 3 and 1.5
    /// included, gives 1.
    static constexpr float pixelScaleFactor(double screenScale) {
        return isRetina(screenScale) ? 2.0F : 1.0F;
    }
    static constexpr bool isRetina(double screenScale) { return screenScale == 2.0; }

    explicit QVMorrow3DGLVIew(const platform::FrameLayout& layout) : placer_(layout) {}

    /// Of the frames that are handed out, in pixels.
    int32_t bufferWidth() const { return placer_.layout().width; }
    int32_t bufferHeight() const { return placer_.layout().height; }

    /// Has the frame drawn into `picture`, which is of the buffer's size, its rows packed, and stays until
    /// the next call. A frame before nextFrame() comes only when it is held, or in a run that starts again.
    void ask(int64_t frame, const platform::Canvas& picture);
    /// Nothing is asked for any more.
    void rest();

    /// The one that comes next; any thread.
    int64_t nextFrame() const;
    /// Whether the frame asked for is there.
    bool isShown() const;
    /// Whether the frame asked for was played, but not drawn, just before it was asked for: it comes only in
    /// a run that starts again.
    bool hasPassed() const;
    /// How many frames the group has, once it was played to its end. Any thread.
    std::optional<int64_t> frames() const;
    /// Called on the render queue when the frame asked for is there or will never be. Set before the first
    /// run.
    void setOnChange(std::function<void()> call) { onChange_ = std::move(call); }

    /// From now on the loop is held up within each frame that was asked for, once it is there: so that frame
    /// can be drawn again. Set before the first run.
    void setHoldsFrames() { holdsFrames_ = true; }
    /// Whether it is held up in that frame: then it can be asked for again.
    bool isHolding(int64_t frame) const;
    /// Called on the render queue before anything else is drawn; none: no longer.
    void change(std::function<void()> call);

    // FrameSink
    int32_t width() const override { return placer_.layout().drawnWidth; }
    int32_t height() const override { return placer_.layout().drawnHeight; }
    platform::Canvas frameCanvas() override;
    bool isOkCaptureScreenVideo() const override;
    bool waitUntilOk() override;
    void wake() override;
    bool wantsNextFrame() const override;
    void renderFrameToVideo() override;
    void skipFrame() override;
    bool wantsFrameAgain() override;
    /// The group has played to its end; the view waits for a run that starts again.
    void finishExport() override;
    bool isExport() const override { return false; }
    /// The view goes on with the new run.
    std::shared_ptr<FrameSink> freshSink() override;

  private:
    bool isWanted() const;
    void makeChange();

    platform::FramePlacer placer_;
    std::vector<uint8_t> drawn_;  ///< a picture that does not fill the frame
    std::function<void()> onChange_, change_;

    mutable std::mutex mutex_;
    std::condition_variable signal_;
    int64_t nextFrame_ = 0, askedFrame_ = -1;
    platform::Canvas picture_, target_;  ///< asked for, and being drawn into
    bool isShown_ = false, hasEnded_ = false, isWoken_ = false;
    bool holdsFrames_ = false, isHolding_ = false, isAskedAgain_ = false;
    std::optional<int64_t> frames_;
};

}  // namespace multiscene
