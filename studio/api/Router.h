// Where requests go: the table of routes, in front of the studio's queue.
#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/DispatchQueue.h"
#include "platform/http/Handler.h"
#include "studio/access/Gate.h"
#include "studio/api/Pattern.h"
#include "studio/api/Route.h"

namespace multiscene::studio {

/// Judges on the server's thread, before a body is read, who asks and whether what is asked exists; hands on
/// to the studio's queue, where bodies are parsed and handlers run.
class Router : public platform::http::Handler {
  public:
    /// Both outlive the router. `bodyBytes`: of JSON bodies that have no limit of their own.
    Router(Gate& gate, platform::DispatchQueue& queue, uint64_t bodyBytes)
        : gate_(gate), queue_(queue), bodyBytes_(bodyBytes) {}

    /// Before open().
    void add(std::vector<Route> routes);
    /// In the order they were added.
    const std::deque<Route>& routes() const { return routes_; }

    /// Before it is open, and once it is closed, nothing is handed on: 503. Any thread.
    void open() { isOpen_ = true; }
    void close() { isOpen_ = false; }

    struct Answered {
        std::string method, pattern;  ///< empty: of no route
        int status;
        uint64_t bytes;  ///< of an answer of known length
        std::chrono::microseconds took;
        std::string reason;  ///< the code of the problem that it tells; empty: none
    };
    /// Who is told of each answer, on the studio's queue. Before open().
    void onAnswered(std::function<void(const Answered&)> call) { answered_ = std::move(call); }

    platform::http::Expectation expect(const platform::http::RequestHead& head) override;
    void handle(platform::http::Request request, platform::http::Responder responder) override;
    /// Problems are said in the language of the request.
    platform::http::Answer finish(const platform::http::RequestHead& head,
                                  platform::http::Answer answer) override;
    void answered(const platform::http::RequestHead& head, int status, uint64_t bytes,
                  std::chrono::microseconds took) override;
    platform::http::Answer refusal(int status, const std::string& reason) override;

  private:
    struct Found {
        const Route* route = nullptr;
        Pattern::Values values;
    };

    /// Throws Problem: 503, 404, 405.
    Found find(const platform::http::RequestHead& head) const;
    /// Who asks. Throws Problem.
    Session judge(const platform::http::RequestHead& head, const Route& route) const;
    void run(const Route& route, ApiRequest& request, const std::string& body,
             platform::http::Responder& responder) const;

    Gate& gate_;
    platform::DispatchQueue& queue_;
    const uint64_t bodyBytes_;
    std::deque<Route> routes_;
    std::deque<Pattern> patterns_;
    std::function<void(const Answered&)> answered_;
    std::string reason_;  ///< of the answer that goes out next; the server's thread
    std::atomic<bool> isOpen_{false};
};

}  // namespace multiscene::studio
