#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/File.h"

namespace platform {

/// Lines through a connected stream socket, both ways; one thread reads, one writes.
class LineSocket {
  public:
    explicit LineSocket(FileHandle socket) : socket_(std::move(socket)) {}

    int descriptor() const { return socket_.descriptor(); }
    /// The next line without its end; waits for it. Nothing when the other side has closed. A longer one than
    /// `most` throws Error(Failed). What lies behind the line stays in the socket when `takesNoMore`.
    std::optional<std::string> readLine(size_t most, bool takesNoMore = false);
    /// So many bytes, as they come after a line. Nothing when the other side closes before.
    std::optional<std::string> readBytes(size_t count);
    /// Throws Error when the other side is gone.
    void write(std::string_view bytes);

  private:
    bool receive(bool takesNoMore);

    FileHandle socket_;
    std::string read_;
    size_t searched_ = 0;
};

}  // namespace platform
