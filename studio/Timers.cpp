#include "studio/Timers.h"

#include <pthread.h>

namespace multiscene::studio {

Timers::Timers(platform::DispatchQueue& queue) : queue_(queue), thread_([this] { run(); }) {
    pthread_setname_np(thread_.native_handle(), "timers");
}

void Timers::stop() {
    {
        const std::lock_guard lock(mutex_);
        isStopping_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void Timers::after(std::chrono::milliseconds delay, std::function<void()> task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.emplace(std::chrono::steady_clock::now() + delay, std::move(task));
    }
    changed_.notify_all();
}

void Timers::run() {
    std::unique_lock lock(mutex_);
    while (!isStopping_) {
        if (tasks_.empty()) {
            changed_.wait(lock);
        } else if (const Time due = tasks_.begin()->first; due > std::chrono::steady_clock::now()) {
            changed_.wait_until(lock, due);
        } else {
            queue_.async(std::move(tasks_.begin()->second));
            tasks_.erase(tasks_.begin());
        }
    }
}

}  // namespace multiscene::studio
