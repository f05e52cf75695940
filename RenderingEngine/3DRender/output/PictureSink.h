#pragma once

#include <functional>
#include <vector>

#include "output/FrameSink.h"
#include "platform/pixels/FrameLayout.h"

namespace multiscene {

/// Hands out selected frames as pictures. Frames are counted from 0 over the whole run; a run that starts
/// again counts anew.
class PictureSink : public FrameSink {
  public:
    /// A frame as it was drawn: RGBA, eight bits a channel, colours multiplied by alpha as blending over
    /// nothing leaves them, top row first, rows packed. Valid during the call.
    struct Picture {
        int64_t frame;
        int32_t width, height;
        const uint8_t* rgba;
    };
    /// Called on the render queue. An Error that it throws ends the run.
    using Receiver = std::function<void(const Picture&)>;
    using Selection = std::function<bool(int64_t frame)>;

    /// No selection: every frame.
    PictureSink(const platform::FrameLayout& layout, Receiver receiver, Selection selection = {});
    /// Pictures as they are drawn, in pixels.
    PictureSink(int32_t width, int32_t height, Receiver receiver, Selection selection = {})
        : PictureSink(platform::FrameLayout::whole(width, height), std::move(receiver),
                      std::move(selection)) {}

    int32_t width() const override { return placer_.layout().drawnWidth; }
    int32_t height() const override { return placer_.layout().drawnHeight; }
    platform::Canvas frameCanvas() override;
    bool isOkCaptureScreenVideo() const override { return true; }
    bool waitUntilOk() override { return true; }
    bool wantsNextFrame() const override { return !selection_ || selection_(nextFrame_); }
    void renderFrameToVideo() override;
    void skipFrame() override { ++nextFrame_; }
    bool isExport() const override { return false; }
    std::shared_ptr<FrameSink> freshSink() override;

  private:
    void handOut();

    platform::FramePlacer placer_;
    Receiver receiver_;
    Selection selection_;
    int64_t nextFrame_ = 0;
    std::vector<uint8_t> drawn_, placed_;
};

}  // namespace multiscene
