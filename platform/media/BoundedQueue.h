// Private to platform/media: the hand-over between two threads, with a limit, that cancelling always wakes.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace platform {

/// Holds at most `capacity` items. All operations are safe from any thread.
template <class Item>
class BoundedQueue {
  public:
    explicit BoundedQueue(size_t capacity) : capacity_(capacity) {}

    /// Open and not full.
    bool hasRoom() const {
        const std::lock_guard lock(mutex_);
        return isOpen_ && items_.size() < capacity_;
    }

    /// Waits for room; false when the queue is or gets closed, or wakeWaiters() came first.
    bool waitForRoom() {
        std::unique_lock lock(mutex_);
        const uint64_t wakes = wakes_;
        changed_.wait(lock, [&] { return !isOpen_ || items_.size() < capacity_ || wakes_ != wakes; });
        return isOpen_ && items_.size() < capacity_;
    }

    /// Ends the calls of waitForRoom() that are under way.
    void wakeWaiters() {
        {
            const std::lock_guard lock(mutex_);
            ++wakes_;
        }
        changed_.notify_all();
    }

    /// Waits for room and puts the item in; false when the queue is or gets closed.
    bool push(Item item) {
        std::unique_lock lock(mutex_);
        if (!waitForRoom(lock)) return false;
        items_.push_back(std::move(item));
        lock.unlock();
        changed_.notify_all();
        return true;
    }

    /// Waits for an item; nothing once the queue is closed and empty.
    std::optional<Item> pop() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return !isOpen_ || !items_.empty(); });
        if (items_.empty()) return std::nullopt;
        std::optional<Item> item = std::move(items_.front());
        items_.pop_front();
        lock.unlock();
        changed_.notify_all();
        return item;
    }

    /// Takes nothing more; what is in it can still be taken out.
    void close() {
        {
            const std::lock_guard lock(mutex_);
            isOpen_ = false;
        }
        changed_.notify_all();
    }

    /// Closes and drops what is in it.
    void abort() {
        std::deque<Item> dropped;
        {
            const std::lock_guard lock(mutex_);
            isOpen_ = false;
            dropped.swap(items_);
        }
        changed_.notify_all();
    }

  private:
    bool waitForRoom(std::unique_lock<std::mutex>& lock) {
        changed_.wait(lock, [&] { return !isOpen_ || items_.size() < capacity_; });
        return isOpen_;
    }

    const size_t capacity_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Item> items_;
    bool isOpen_ = true;
    uint64_t wakes_ = 0;
};

}  // namespace platform
