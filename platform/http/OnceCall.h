#pragma once

#include <functional>
#include <mutex>
#include <utility>

namespace platform::http {

/// Something that happens at most once, and a call that follows it, whichever is there first. Any thread.
class OnceCall {
  public:
    bool hasHappened() const {
        const std::lock_guard lock(mutex_);
        return hasHappened_;
    }
    void setCall(std::function<void()> call) {
        {
            const std::lock_guard lock(mutex_);
            if (!hasHappened_) {
                call_ = std::move(call);
                return;
            }
        }
        if (call) call();
    }
    void happen() {
        std::function<void()> call;
        {
            const std::lock_guard lock(mutex_);
            if (std::exchange(hasHappened_, true)) return;
            call = std::move(call_);
        }
        if (call) call();
    }

  private:
    mutable std::mutex mutex_;
    bool hasHappened_ = false;
    std::function<void()> call_;
};

}  // namespace platform::http
