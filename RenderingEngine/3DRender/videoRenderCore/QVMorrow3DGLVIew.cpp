#include "videoRenderCore/QVMorrow3DGLVIew.h"

#include <algorithm>
#include <utility>

namespace multiscene {

// What is asked for

void QVMorrow3DGLVIew::ask(int64_t frame, const platform::Canvas& picture) {
    const std::lock_guard lock(mutex_);
    askedFrame_ = frame;
    picture_ = picture;
    isShown_ = false;
    if (isHolding_ && !isAskedAgain_ && frame == nextFrame_ - 1) {
        --nextFrame_;
        isAskedAgain_ = true;
    }
    signal_.notify_all();
}

bool QVMorrow3DGLVIew::isHolding(int64_t frame) const {
    const std::lock_guard lock(mutex_);
    return isHolding_ && frame == nextFrame_ - 1;
}

void QVMorrow3DGLVIew::change(std::function<void()> call) {
    const std::lock_guard lock(mutex_);
    change_ = std::move(call);
}

void QVMorrow3DGLVIew::rest() {
    const std::lock_guard lock(mutex_);
    askedFrame_ = -1;
}

int64_t QVMorrow3DGLVIew::nextFrame() const {
    const std::lock_guard lock(mutex_);
    return nextFrame_;
}

bool QVMorrow3DGLVIew::isShown() const {
    const std::lock_guard lock(mutex_);
    return isShown_;
}

bool QVMorrow3DGLVIew::hasPassed() const {
    const std::lock_guard lock(mutex_);
    return askedFrame_ >= 0 && askedFrame_ < nextFrame_ && !isShown_;
}

std::optional<int64_t> QVMorrow3DGLVIew::frames() const {
    const std::lock_guard lock(mutex_);
    return frames_;
}

// What the loop waits for, under the lock

bool QVMorrow3DGLVIew::isWanted() const { return !hasEnded_ && nextFrame_ <= askedFrame_; }

/// A change is made by who waits.
bool QVMorrow3DGLVIew::isOkCaptureScreenVideo() const {
    const std::lock_guard lock(mutex_);
    return isWanted() && !change_;
}

bool QVMorrow3DGLVIew::waitUntilOk() {
    std::unique_lock lock(mutex_);
    signal_.wait(lock, [this] { return isWanted() || isWoken_; });
    isWoken_ = false;
    if (!isWanted()) return false;
    lock.unlock();
    makeChange();
    return true;
}

bool QVMorrow3DGLVIew::wantsFrameAgain() {
    std::unique_lock lock(mutex_);
    if (!isHolding_) return false;
    signal_.wait(lock, [this] { return isAskedAgain_ || isWoken_ || askedFrame_ >= nextFrame_; });
    isHolding_ = false;
    const bool isAgain = std::exchange(isAskedAgain_, false);
    if (isWoken_) return false;
    lock.unlock();
    makeChange();
    return isAgain;
}

void QVMorrow3DGLVIew::makeChange() {
    std::function<void()> change;
    {
        const std::lock_guard lock(mutex_);
        std::swap(change, change_);
    }
    if (change) change();
}

void QVMorrow3DGLVIew::wake() {
    const std::lock_guard lock(mutex_);
    isWoken_ = true;
    signal_.notify_all();
}

// Frames

bool QVMorrow3DGLVIew::wantsNextFrame() const {
    const std::lock_guard lock(mutex_);
    return nextFrame_ == askedFrame_;
}

platform::Canvas QVMorrow3DGLVIew::frameCanvas() {
    {
        const std::lock_guard lock(mutex_);
        target_ = picture_;
    }
    if (placer_.layout().isWhole()) return target_;
    drawn_.resize(static_cast<size_t>(width()) * static_cast<size_t>(height()) * 4);
    return {.pixels = drawn_.data(), .stride = ptrdiff_t{width()} * 4, .width = width(), .height = height()};
}

void QVMorrow3DGLVIew::renderFrameToVideo() {
    if (!placer_.layout().isWhole()) placer_.place(drawn_.data(), target_.pixels);
    {
        const std::lock_guard lock(mutex_);
        isShown_ = nextFrame_ == askedFrame_;
        isHolding_ = isShown_ && holdsFrames_;
        // It was asked for again, into other memory, while it was drawn.
        if (isShown_ && picture_.pixels != target_.pixels)
            std::copy_n(target_.pixels, target_.stride * target_.height, picture_.pixels);
        ++nextFrame_;
    }
    if (onChange_) onChange_();
}

void QVMorrow3DGLVIew::skipFrame() {
    const std::lock_guard lock(mutex_);
    ++nextFrame_;
}

void QVMorrow3DGLVIew::finishExport() {
    {
        const std::lock_guard lock(mutex_);
        hasEnded_ = true;
        frames_ = nextFrame_;
    }
    if (onChange_) onChange_();
}

std::shared_ptr<FrameSink> QVMorrow3DGLVIew::freshSink() {
    const std::lock_guard lock(mutex_);
    nextFrame_ = 0;
    hasEnded_ = isWoken_ = isHolding_ = isAskedAgain_ = false;
    change_ = nullptr;
    return nullptr;
}

}  // namespace multiscene
