// Server-sent events: what a page hears without asking.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform::http {

struct Event {
    std::string data;  ///< may have several lines
    std::string name;  ///< empty: "message"
    std::string id;    ///< empty: none; a page that comes back names the last one in "Last-Event-ID"
    std::optional<std::chrono::milliseconds> retry = std::nullopt;  ///< how long a page waits before it does
};

class StreamState;

/// Copies are the same stream. Any thread; may outlive the server. It ends when its client goes or does not
/// take what it is sent, when the server stops, or by close(); not with the last copy.
class EventStream {
  public:
    EventStream() = default;  ///< a closed one
    explicit EventStream(std::shared_ptr<StreamState> state) : state_(std::move(state)) {}

    /// False when the stream has ended, which this event may be the reason of: the client has more than
    /// Limits::streamBytes still to take. Throws Error for a name or an id with a line break or NUL.
    bool send(const Event& event) const;
    /// What was sent still goes out.
    void close() const;
    bool isOpen() const;
    /// Called once when the stream ends, on the server's thread; at once, when it has ended.
    void onClosed(std::function<void()> call) const;

  private:
    std::shared_ptr<StreamState> state_;
};

}  // namespace platform::http
