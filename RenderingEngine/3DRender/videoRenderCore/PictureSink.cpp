#include "videoRenderCore/PictureSink.h"

#include <algorithm>

#include "core/GLESUtils/ReadBack.h"

namespace multiscene {

namespace {

void flipRows(std::vector<uint8_t>& pixels, size_t rowBytes) {
    const size_t rows = pixels.size() / rowBytes;
    for (size_t top = 0, bottom = rows - 1; top < bottom; ++top, --bottom)
        std::swap_ranges(pixels.begin() + static_cast<ptrdiff_t>(top * rowBytes),
                         pixels.begin() + static_cast<ptrdiff_t>((top + 1) * rowBytes),
                         pixels.begin() + static_cast<ptrdiff_t>(bottom * rowBytes));
}

}  // namespace

PictureSink::PictureSink(int32_t width, int32_t height, Receiver receiver, Selection selection)
    : target_(width, height, TargetShaders::OwnOnly),
      receiver_(std::move(receiver)),
      selection_(std::move(selection)) {}

std::shared_ptr<FrameSink> PictureSink::freshSink() {
    return std::make_shared<PictureSink>(width(), height(), receiver_, selection_);
}

void PictureSink::renderFrameToVideo() {
    if (wantsNextFrame()) handOut();
    ++nextFrame_;
}

void PictureSink::handOut() {
    const size_t rowBytes = static_cast<size_t>(width()) * 4;
    pixels_.resize(rowBytes * static_cast<size_t>(height()));
    readFramebuffer(target_.frameBuffer(), width(), height(), PixelOrder::RGBA, pixels_.data(), width() * 4);
    flipRows(pixels_, rowBytes);
    receiver_({.frame = nextFrame_, .width = width(), .height = height(), .rgba = pixels_.data()});
}

}  // namespace multiscene
