#include "platform/base/DispatchQueue.h"

#include <pthread.h>

namespace platform {

DispatchQueue::DispatchQueue(const std::string& label) : label_(label) {
    thread_ = std::thread([this] { run(); });
    const std::lock_guard lock(mutex_);
    owner_ = thread_.get_id();
    // The kernel keeps 15 characters of a thread's name.
    pthread_setname_np(thread_.native_handle(), label.substr(0, 15).c_str());
}

DispatchQueue::DispatchQueue(MainTag) : label_("main"), owner_(std::this_thread::get_id()) {}

DispatchQueue::~DispatchQueue() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void DispatchQueue::async(Task task) {
    {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wake_.notify_all();
}

void DispatchQueue::sync(const Task& task) {
    if (isCurrent()) {
        task();
        return;
    }
    std::mutex doneMutex;
    std::condition_variable doneSignal;
    bool done = false;
    async([&] {
        task();
        const std::lock_guard lock(doneMutex);
        done = true;
        doneSignal.notify_one();
    });
    std::unique_lock lock(doneMutex);
    doneSignal.wait(lock, [&] { return done; });
}

bool DispatchQueue::isCurrent() const {
    const std::lock_guard lock(mutex_);
    return owner_ == std::this_thread::get_id();
}

DispatchQueue& DispatchQueue::main() {
    static DispatchQueue queue{MainTag{}};
    return queue;
}

void DispatchQueue::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [&] { return stopping_ || !tasks_.empty(); });
        if (tasks_.empty()) return;
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
}

void DispatchQueue::pumpUntil(const std::function<bool()>& isDone, std::chrono::milliseconds interval) {
    {
        const std::lock_guard lock(mutex_);
        owner_ = std::this_thread::get_id();
    }
    while (!isDone()) {
        Task task;
        {
            std::unique_lock lock(mutex_);
            wake_.wait_for(lock, interval, [&] { return !tasks_.empty(); });
            if (tasks_.empty()) continue;
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
    }
}

}  // namespace platform
