// What goes out on a connection, a slice at a time.
#pragma once

#include <string>
#include <string_view>

#include "platform/http/Answer.h"

namespace platform::http {

class Outgoing {
  public:
    /// An answer in its final form. `request` may be null where none could be read. `endsConnection`: says
    /// that no other answer follows.
    Outgoing(Answer answer, const RequestHead* request, bool endsConnection);
    /// Just these bytes.
    explicit Outgoing(std::string bytes) : front_(std::move(bytes)) {}
    /// More of them, before the first is out.
    void append(std::string_view bytes) { front_ += bytes; }
    /// The head of an answer without an end.
    static Outgoing streamHead();

    /// The next bytes, which live until the next call; none when all is out. A file is read a slice at a
    /// time, so that others get their turn. Throws Error when the file has become shorter than was said.
    std::string_view next();

  private:
    std::string_view nextOfFile();

    std::string front_;  ///< the head, and a body that is small
    bool frontIsOut_ = false;
    Answer answer_;
    uint64_t at_ = 0, left_ = 0;  ///< of the body
};

}  // namespace platform::http
