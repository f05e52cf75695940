// Numbers in the text format that monitoring reads.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace multiscene::studio {

using MetricLabels = std::vector<std::pair<std::string, std::string>>;

/// How long things took, in seconds.
class Histogram {
  public:
    static constexpr std::array kBounds = {0.005, 0.01, 0.025, 0.05, 0.1,   0.25,  0.5,   1.0,   2.5,
                                           5.0,   10.0, 30.0,  60.0, 120.0, 300.0, 600.0, 1800.0};

    void add(double seconds);
    /// Of each bound, and of all: how many were no longer.
    const std::array<uint64_t, kBounds.size() + 1>& counts() const { return counts_; }
    double sum() const { return sum_; }

  private:
    std::array<uint64_t, kBounds.size() + 1> counts_{};
    double sum_ = 0;
};

/// Families one after the other, each with its samples. One thread.
class MetricsText {
  public:
    static constexpr const char* kContentType = "text/plain; version=0.0.4; charset=utf-8";

    /// `type`: "counter", "gauge", "histogram". The samples that follow are its.
    void family(const std::string& name, const char* type, const char* help);
    void sample(double value, const MetricLabels& labels = {}) { line("", labels, value); }
    void samples(const Histogram& histogram, const MetricLabels& labels = {});
    const std::string& text() const { return text_; }

  private:
    void line(std::string_view suffix, const MetricLabels& labels, double value);

    std::string name_, text_;
};

}  // namespace multiscene::studio
