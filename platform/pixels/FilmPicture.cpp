#include "platform/pixels/FilmPicture.h"

#include <cstring>
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

FilmPicture::FilmPicture(int width, int height, bool opaque, Find find)
    : width_(width), height_(height), isOpaque_(opaque), find_(std::move(find)) {}

const FilmPicture* FilmPicture::found() const {
    const std::lock_guard lock(mutex_);
    if (!find_) return found_.get();
    auto picture = find_();
    if (picture && picture->width() == width_ && picture->height() == height_) {
        found_ = std::move(picture);
    } else {
        pixels_ = pool_.take(width_, height_);
        std::memset(pixels_->data(), 0, pixels_->size());
    }
    find_ = nullptr;
    return found_.get();
}

bool FilmPicture::makePixels() const {
    if (const FilmPicture* const other = found()) return other->makePixels();
    const std::lock_guard lock(mutex_);
    if (pixels_) return false;
    PixelBufferPool::Pointer pixels = pool_.take(width_, height_);
    yuvToPixels(planes_, *pixels);
    pixels_ = std::move(pixels);
    return true;
}

const uint8_t* FilmPicture::data() const {
    if (const FilmPicture* const other = found()) return other->data();
    if (makePixels()) wishes_->setWantsPixels(true);
    return pixels_->data();
}

const YuvPicture* FilmPicture::planesAlone() const {
    if (const FilmPicture* const other = found()) return other->planesAlone();
    if (wishes_) wishes_->setWantsPixels(false);
    const std::lock_guard lock(mutex_);
    return pixels_ ? nullptr : &planes_;
}

}  // namespace platform
