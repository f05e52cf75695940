#include "platform/media/PixelBuffer.h"

#include <mutex>
#include <new>
#include <vector>

#include "platform/base/Error.h"

namespace platform {

namespace {
constexpr std::align_val_t kAlignment{64};
// Vector code may write a little past the last pixel of a row; behind the last row that lands here.
constexpr size_t kPadding = 64;
}  // namespace

void PixelBuffer::Free::operator()(uint8_t* bytes) const { ::operator delete(bytes, kAlignment); }

void PixelBuffer::resize(int width, int height) {
    const size_t needed = static_cast<size_t>(width) * 4 * height + kPadding;
    if (needed > capacity_) {
        bytes_.reset();
        capacity_ = 0;
        void* memory = ::operator new(needed, kAlignment, std::nothrow);
        if (!memory) throw Error(ErrorKind::Transient, "out of memory for a picture");
        bytes_.reset(static_cast<uint8_t*>(memory));
        capacity_ = needed;
    }
    width_ = width;
    height_ = height;
}

struct PixelBufferPool::Shelf {
    std::mutex mutex;
    std::vector<std::unique_ptr<PixelBuffer>> free;
};

PixelBufferPool::PixelBufferPool() : shelf_(std::make_shared<Shelf>()) {}

PixelBufferPool::Pointer PixelBufferPool::take(int width, int height) {
    std::unique_ptr<PixelBuffer> buffer;
    {
        const std::lock_guard lock(shelf_->mutex);
        if (!shelf_->free.empty()) {
            buffer = std::move(shelf_->free.back());
            shelf_->free.pop_back();
        }
    }
    if (!buffer) buffer = std::make_unique<PixelBuffer>();
    buffer->resize(width, height);
    return Pointer(buffer.release(), Recycler(shelf_));
}

void PixelBufferPool::Recycler::operator()(PixelBuffer* buffer) const {
    std::unique_ptr<PixelBuffer> owned(buffer);
    if (!shelf_) return;
    const std::lock_guard lock(shelf_->mutex);
    shelf_->free.push_back(std::move(owned));
}

}  // namespace platform
