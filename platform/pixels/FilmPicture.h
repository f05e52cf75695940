// One picture of a film, in planes until somebody wants pixels.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/media/PixelBuffer.h"
#include "platform/pixels/FromYuv.h"

namespace platform {

/// What was wanted of the pictures of a film so far: whoever decodes the next ones makes their pixels ahead
/// where pixels are wanted. Any thread.
class FilmWishes {
  public:
    bool wantsPixels() const { return wantsPixels_; }
    void setWantsPixels(bool wants) { wantsPixels_ = wants; }

  private:
    std::atomic<bool> wantsPixels_{false};
};

/// An upright picture, top row first. Any thread; what it shows never changes.
class FilmPicture {
  public:
    using Find = std::function<std::shared_ptr<const FilmPicture>()>;

    /// In planes, opaque, kept alive by `owner`; a buffer of the pool takes the pixels.
    FilmPicture(const YuvPicture& planes, std::shared_ptr<const void> owner, PixelBufferPool pool,
                std::shared_ptr<FilmWishes> wishes);
    /// In pixels alone. `opaque`: alpha is 255 everywhere.
    FilmPicture(PixelBufferPool::Pointer pixels, bool opaque);
    /// Found when somebody looks at it: of the same size, and opaque likewise. Black when `find` gives none.
    FilmPicture(int width, int height, bool opaque, Find find);

    int width() const { return width_; }
    int height() const { return height_; }
    int stride() const { return width_ * 4; }  ///< bytes a row of pixels
    bool isOpaque() const { return isOpaque_; }

    /// B, G, R, A; made by the first who asks. Throws Error(Transient) when there is no memory.
    const uint8_t* data() const;
    /// Ahead of data(), for a film whose pixels are wanted. False when they were there.
    bool makePixels() const;
    /// What the picture can be painted from without pixels, which is all that is wanted of the film as far as
    /// the asker knows; none where there are pixels already.
    const YuvPicture* planesAlone() const;

  private:
    const FilmPicture* found() const;

    const int width_, height_;
    const bool isOpaque_;
    const YuvPicture planes_;
    const std::shared_ptr<const void> owner_;
    const std::shared_ptr<FilmWishes> wishes_;
    mutable PixelBufferPool pool_;
    mutable std::mutex mutex_;
    mutable PixelBufferPool::Pointer pixels_;
    mutable Find find_;  ///< until it was asked
    mutable std::shared_ptr<const FilmPicture> found_;
};

}  // namespace platform
