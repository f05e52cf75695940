// The socket pair between supervisor and worker.
#pragma once

#include <mutex>
#include <optional>
#include <utility>

#include "platform/fence/Message.h"

namespace platform {

/// One end. Every message is one packet, so that nobody can leave the other waiting within one. Files travel
/// with their message and are the receiver's. send() from any thread, receive() from one.
class Channel {
  public:
    explicit Channel(FileHandle socket) : socket_(std::move(socket)) {}
    /// Throws Error.
    static std::pair<Channel, Channel> pair();
    Channel(Channel&& other) noexcept : socket_(std::move(other.socket_)) {}

    int descriptor() const { return socket_.descriptor(); }

    /// Waits while the other end does not listen; false when it is gone. Throws Error(Failed) for a message
    /// that is too large.
    bool send(const Message& message);
    /// The same without waiting: false also when the other end has not taken what it was sent before.
    bool sendAtOnce(const Message& message);
    /// Nothing when there is no message, or (see isClosed()) none will come. Waits for one if told so. Throws
    /// Error(Failed) when the packet is not a message.
    std::optional<Message> receive(bool waits = false);
    /// The other end has gone and everything that it said has been heard.
    bool isClosed() const { return isClosed_; }

  private:
    bool sendWith(const Message& message, int flags);

    FileHandle socket_;
    std::mutex sending_;
    bool isClosed_ = false;
};

}  // namespace platform
