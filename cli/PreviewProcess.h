#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/preview/PreviewWindow.h"
#include "platform/fence/Worker.h"

namespace multiscene::cli {

/// The process in which the window of a preview lives: it has threads, a screen and a sound device, and reads
/// no foreign file. Made while the program has one thread.
class PreviewProcess {
  public:
    /// What the window wants.
    enum class Wish { AnotherWorker, Nothing };

    explicit PreviewProcess(const PreviewSettings& settings);

    /// A worker draws for the window from now on.
    void connect(platform::FileHandle connection);
    /// There is none for the moment.
    void say(const platform::Error& error);
    /// What the window wants when its worker has ended; waits until it knows, or `isCancelled`. Throws
    /// platform::Error: what ended the window, or Cancelled.
    Wish wish(const std::function<bool()>& isCancelled);
    /// Closes the window and waits a moment for that.
    void close();

  private:
    std::optional<Wish> heard();

    platform::Worker process_;
};

}  // namespace multiscene::cli
