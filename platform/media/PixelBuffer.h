// Pictures in main memory, four bytes a pixel, and a pool that hands the same memory out again and again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform {

/// One picture: B, G, R, A in memory, the top row first, rows tightly packed.
class PixelBuffer {
  public:
    PixelBuffer() = default;
    PixelBuffer(int width, int height) { resize(width, height); }

    int width() const { return width_; }
    int height() const { return height_; }
    /// Bytes a row: always width * 4.
    int stride() const { return width_ * 4; }
    size_t size() const { return static_cast<size_t>(stride()) * height_; }
    uint8_t* data() { return bytes_.get(); }
    const uint8_t* data() const { return bytes_.get(); }

    /// Gives the buffer this size in pixels; the content is then undefined. Reuses its memory where it is
    /// large enough. Throws Error(Transient) when there is no memory.
    void resize(int width, int height);

  private:
    struct Free {
        void operator()(uint8_t* bytes) const;
    };
    int width_ = 0, height_ = 0;
    size_t capacity_ = 0;
    std::unique_ptr<uint8_t, Free> bytes_;  ///< 64-byte aligned
};

/// Recycles pixel buffers. All operations are safe from any thread, and buffers may outlive the pool.
class PixelBufferPool {
    struct Shelf;

  public:
    /// Puts a buffer back on its pool's shelf instead of freeing it.
    class Recycler {
      public:
        Recycler() = default;
        explicit Recycler(std::shared_ptr<Shelf> shelf) : shelf_(std::move(shelf)) {}
        void operator()(PixelBuffer* buffer) const;

      private:
        std::shared_ptr<Shelf> shelf_;
    };
    using Pointer = std::unique_ptr<PixelBuffer, Recycler>;

    PixelBufferPool();

    /// A buffer of this size with undefined content; a recycled one where there is one.
    Pointer take(int width, int height);

  private:
    std::shared_ptr<Shelf> shelf_;
};

}  // namespace platform
