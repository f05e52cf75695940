#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

/// A text as a picture for cameras: a square of dark and light modules, which needs a light rim of four
/// around it.
class QrCode {
  public:
    /// Throws Error for a text that is too long (2331 bytes) or holds NUL.
    explicit QrCode(const std::string& text);

    size_t size() const { return size_; }  ///< modules along a side
    bool isDark(size_t column, size_t row) const { return dark_[row * size_ + column]; }

    /// With its rim, dark on light, at the size of whatever shows it.
    std::string svg() const;
    /// With its rim, for a terminal, two rows of modules a line; light modules are drawn.
    std::string terminalText() const;

  private:
    bool isDrawnDark(size_t column, size_t row) const;

    size_t size_ = 0;
    std::vector<bool> dark_;
};

}  // namespace platform
