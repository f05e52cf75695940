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

PictureSink::PictureSink(const platform::FrameLayout& layout, Receiver receiver, Selection selection)
    : placer_(layout),
      target_(layout.drawnWidth, layout.drawnHeight, TargetShaders::OwnOnly),
      receiver_(std::move(receiver)),
      selection_(std::move(selection)) {}

std::shared_ptr<FrameSink> PictureSink::freshSink() {
    return std::make_shared<PictureSink>(placer_.layout(), receiver_, selection_);
}

void PictureSink::renderFrameToVideo() {
    if (wantsNextFrame()) handOut();
    ++nextFrame_;
}

void PictureSink::handOut() {
    const platform::FrameLayout& layout = placer_.layout();
    const size_t rowBytes = static_cast<size_t>(layout.width) * 4;
    pixels_.resize(rowBytes * static_cast<size_t>(layout.height));
    drawn_.resize(layout.isWhole() ? 0 : static_cast<size_t>(width()) * static_cast<size_t>(height()) * 4);
    readFramebuffer(target_.frameBuffer(), width(), height(), PixelOrder::RGBA,
                    layout.isWhole() ? pixels_.data() : drawn_.data(), width() * 4);
    if (!layout.isWhole()) placer_.place(drawn_.data(), pixels_.data());
    flipRows(pixels_, rowBytes);
    receiver_({.frame = nextFrame_, .width = layout.width, .height = layout.height, .rgba = pixels_.data()});
}

}  // namespace multiscene
