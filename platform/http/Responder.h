#pragma once

#include <functional>
#include <memory>

#include "platform/http/Answer.h"
#include "platform/http/EventStream.h"

namespace platform::http {

class Exchange;

/// Answers one request, once: what comes after the first answer() or stream() does nothing. One that is
/// dropped without either answers a 500. Any thread; may outlive the server.
class Responder {
  public:
    explicit Responder(std::shared_ptr<Exchange> exchange);
    ~Responder();
    Responder(Responder&&) noexcept;
    Responder& operator=(Responder&&) noexcept;

    /// False once it was moved away.
    explicit operator bool() const { return exchange_ != nullptr; }

    void answer(Answer answer);
    /// Answers with an endless stream of events. Beyond the limit of streams it is a 503, and the stream is
    /// closed.
    EventStream stream();

    /// Whether nobody waits for the answer any more: the client has closed its side or the whole connection.
    bool isGone() const;
    /// Called once when that happens, on the server's thread; at once, when it has happened. Not after the
    /// answer.
    void onGone(std::function<void()> call);

  private:
    void drop();

    std::shared_ptr<Exchange> exchange_;
};

}  // namespace platform::http
