#pragma once

#include <cstddef>
#include <string_view>

#include "platform/http/Limits.h"

namespace platform::http {

/// Finds where a request's head ends while its bytes come in, and refuses on the way what no honest client
/// sends: line ends without CR, folded lines, control characters, too much of anything.
class HeadScan {
  public:
    explicit HeadScan(const Limits& limits) : limits_(limits) {}

    /// Bytes of the head with its empty line; 0 while that is still to come. `bytes` begin as they did the
    /// last time. Throws Refusal.
    std::size_t size(std::string_view bytes);

  private:
    void endLine(std::size_t length);
    void checkByte(char byte, std::size_t column) const;
    void checkSizes(std::size_t lineLength) const;

    const Limits& limits_;
    std::size_t seen_ = 0;       ///< bytes looked at
    std::size_t lineStart_ = 0;  ///< of the line that is being looked at
    std::size_t lines_ = 0;      ///< whole ones so far
};

}  // namespace platform::http
