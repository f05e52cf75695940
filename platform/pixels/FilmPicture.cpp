#include "platform/pixels/FilmPicture.h"

#include <utility>

namespace platform {

FilmPicture::FilmPicture(const YuvPicture& planes, std::shared_ptr<const void> owner, PixelBufferPool pool,
                         std::shared_ptr<FilmWishes> wishes)
    : width_(planes.width),
      height_(planes.height),
      isOpaque_(true),
      planes_(planes),
      owner_(std::move(owner)),
      wishes_(std::move(wishes)),
      pool_(std::move(pool)) {}

FilmPicture::FilmPicture(PixelBufferPool::Pointer pixels, bool opaque)
    : width_(pixels->width()), height_(pixels->height()), isOpaque_(opaque), pixels_(std::move(pixels)) {}

bool FilmPicture::makePixels() const {
    const std::lock_guard lock(mutex_);
    if (pixels_) return false;
    PixelBufferPool::Pointer pixels = pool_.take(width_, height_);
    yuvToPixels(planes_, *pixels);
    pixels_ = std::move(pixels);
    return true;
}

const uint8_t* FilmPicture::data() const {
    if (makePixels()) wishes_->setWantsPixels(true);
    return pixels_->data();
}

const YuvPicture* FilmPicture::planesAlone() const {
    if (wishes_) wishes_->setWantsPixels(false);
    const std::lock_guard lock(mutex_);
    return pixels_ ? nullptr : &planes_;
}

}  // namespace platform
