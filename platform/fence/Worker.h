// A process of its own for work that may crash, hang or be taken over.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>

#include "platform/fence/Channel.h"

namespace platform {

/// Made by fork(), before the program has a second thread, and not by starting the program anew: loading it
/// with its hundred and eighty libraries takes 50 ms, forking takes one, the worker has what the supervisor
/// has read already (the command line), and no path to the program has to be found or trusted. With threads
/// a fork would copy locks that nobody opens again, so start() refuses it. The price: both have the same
/// memory layout, so a worker that was taken over knows the supervisor's addresses.
///
/// The worker leads a session of its own, so that the terminal's Ctrl-C reaches the supervisor alone and
/// everything that it started can be ended with it; it ends when its supervisor does; standard input is
/// empty, and what libraries write to standard output or errors comes out of errors(). It holds no descriptor
/// but its channel.
///
/// Supervisor's thread only. Nothing but the destructor, which ends the worker, is needed to clean up.
class Worker {
  public:
    /// In the worker: what it does, and its exit code. Signals are blocked as they were in the supervisor.
    using Body = std::function<int(Channel&)>;

    /// Throws Error.
    explicit Worker(const Body& body);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    Channel& channel() { return *channel_; }
    /// The reading end of what the worker writes to its standard output and errors; never blocks.
    int errors() const { return errors_.descriptor(); }
    /// Becomes readable when the worker ends; -1 on kernels without it.
    int endDescriptor() const { return end_.descriptor(); }
    pid_t process() const { return process_; }

    /// A signal for the worker and everything that it has started.
    void signal(int number) const;
    /// The wait status once the worker has ended; it is reaped then, and what it left running is killed.
    std::optional<int> ended();
    /// Kills it and waits for its end.
    int kill();
    /// Its end is not waited for. It has been killed.
    void abandon() { isAbandoned_ = true; }

  private:
    [[noreturn]] void runChild(const Body& body, Channel channel, FileHandle errors, pid_t supervisor);
    void keep(int status);

    pid_t process_ = -1;
    std::unique_ptr<Channel> channel_;
    FileHandle errors_, end_;
    std::optional<int> status_;
    bool isAbandoned_ = false;
};

}  // namespace platform
