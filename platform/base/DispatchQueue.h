// Serial work queues. Each named queue is one thread; the main queue runs on the thread that pumps it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace platform {

/// A queue that runs its tasks one after another, in order. All operations are safe from any thread.
/// A task that throws ends the program: tasks handle their own errors.
class DispatchQueue {
  public:
    using Task = std::function<void()>;

    /// Starts the queue's thread. `label` names it in debuggers.
    explicit DispatchQueue(const std::string& label);
    /// Runs what is still queued, then joins the thread. Must not be called from the queue itself.
    ~DispatchQueue();
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    const std::string& label() const { return label_; }

    void async(Task task);
    /// Waits until the task has run. From the queue's own thread the task runs at once.
    void sync(const Task& task);
    bool isCurrent() const;

    /// The queue that the program's main thread pumps. It has no thread of its own.
    static DispatchQueue& main();
    /// Main queue only: runs tasks on the calling thread until `isDone` holds; `isDone` is asked again after
    /// every task and at least every `interval`.
    void pumpUntil(const std::function<bool()>& isDone,
                   std::chrono::milliseconds interval = std::chrono::milliseconds(50));

  private:
    struct MainTag {};
    explicit DispatchQueue(MainTag);
    void run();

    std::string label_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Task> tasks_;
    bool stopping_ = false;
    std::thread::id owner_;
    std::thread thread_;
};

}  // namespace platform
