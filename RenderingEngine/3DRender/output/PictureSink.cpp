#include "output/PictureSink.h"

#include "core/GLESUtils/PixelRows.h"

namespace multiscene {

PictureSink::PictureSink(const platform::FrameLayout& layout, Receiver receiver, Selection selection)
    : placer_(layout), receiver_(std::move(receiver)), selection_(std::move(selection)) {}

std::shared_ptr<FrameSink> PictureSink::freshSink() {
    return std::make_shared<PictureSink>(placer_.layout(), receiver_, selection_);
}

platform::Canvas PictureSink::frameCanvas() {
    drawn_.resize(static_cast<size_t>(width()) * static_cast<size_t>(height()) * 4);
    return {.pixels = drawn_.data(), .stride = ptrdiff_t{width()} * 4, .width = width(), .height = height()};
}

void PictureSink::renderFrameToVideo() {
    if (wantsNextFrame()) handOut();
    ++nextFrame_;
}

void PictureSink::handOut() {
    const platform::FrameLayout& layout = placer_.layout();
    const int pixels = layout.width * layout.height;
    placed_.resize(static_cast<size_t>(pixels) * 4);
    if (!layout.isWhole()) placer_.place(drawn_.data(), placed_.data());
    copyPixels(layout.isWhole() ? drawn_.data() : placed_.data(), placed_.data(), pixels, true);
    receiver_({.frame = nextFrame_, .width = layout.width, .height = layout.height, .rgba = placed_.data()});
}

}  // namespace multiscene
