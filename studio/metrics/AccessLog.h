#pragma once

#include <filesystem>

#include "studio/api/Router.h"

namespace multiscene::studio {

/// A line for each request: when, what, answer, bytes, milliseconds. Of what was asked for only the route:
/// who reads the log learns neither links nor names. The file may be moved away at any time, and a new one is
/// begun. One thread.
class AccessLog {
  public:
    /// Throws platform::Error when it cannot be written.
    explicit AccessLog(std::filesystem::path file);

    void write(const Router::Answered& answered);

  private:
    const std::filesystem::path file_;
};

}  // namespace multiscene::studio
