#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/http/Connection.h"
#include "platform/http/Handler.h"
#include "platform/http/Limits.h"
#include "platform/http/Server.h"
#include "platform/http/Sockets.h"

namespace platform::http {

/// What the connections of a server share. The server's thread, unless told otherwise.
class Service : public std::enable_shared_from_this<Service> {
  public:
    Service(const ServerOptions& options, uint16_t port, std::shared_ptr<Loop> loop, Handler& handler);

    const Limits& limits() const { return limits_; }
    const std::shared_ptr<Loop>& loop() const { return loop_; }
    bool isSecure() const { return isSecure_; }
    bool isStopping() const { return isStopping_; }

    bool knowsHost(const std::string& host) const;
    /// What the handler says; its exceptions as answers of 500.
    Expectation expect(const RequestHead& head);
    void handle(Request request, Responder responder);
    Answer refusal(int status, const std::string& reason);
    Answer finish(const RequestHead& head, Answer answer);
    void answered(const RequestHead& head, int status, uint64_t bytes, std::chrono::microseconds took);

    void add(std::unique_ptr<Socket> socket);
    void remove(const std::shared_ptr<Connection>& connection);
    /// Whether another stream may begin; streamEnded() follows if so.
    bool beginStream();
    void streamEnded() { --streams_; }

    void stop();
    void closeAll();
    /// Any thread: whether all connections had ended before the deadline.
    bool waitUntilEmpty(std::chrono::milliseconds patience);
    ServerCounts counts() const;

  private:
    bool makeRoom(const std::string& group);
    std::vector<std::shared_ptr<Connection>> everyone() const;
    void sweepLater();
    void sweep();

    const Limits limits_;
    const std::shared_ptr<Loop> loop_;
    Handler& handler_;
    const bool isSecure_;
    std::vector<std::string> hosts_;
    std::set<std::shared_ptr<Connection>> connections_;
    std::map<std::string, std::size_t> perAddress_;
    bool sweeps_ = false, isStopping_ = false;

    std::atomic<std::size_t> count_{0}, streams_{0};
    std::atomic<uint64_t> requests_{0}, refusals_{0};
    std::mutex mutex_;
    std::condition_variable emptied_;
};

}  // namespace platform::http
