// Text from templates and servers, shown to people.
#pragma once

#include <string>
#include <vector>

namespace multiscene::cli {

/// The text with everything that would steer a terminal taken out.
std::string printable(const std::string& text);

/// Lines of cells in columns as wide as their widest cell. East Asian characters count as two.
class Table {
  public:
    explicit Table(std::vector<std::string> headings) : rows_{std::move(headings)} {}
    void add(std::vector<std::string> cells);
    /// Every line ends in "\n".
    std::string text() const;

  private:
    std::vector<std::vector<std::string>> rows_;
};

/// "1.4 MB", "38 kB"; "12.3 s".
std::string megabyteText(double megabytes);
std::string secondsText(double seconds);

}  // namespace multiscene::cli
