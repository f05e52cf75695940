#pragma once

#include <functional>
#include <mutex>

#include "cli/Console.h"
#include "platform/fence/Channel.h"

namespace multiscene::cli {

/// The console of a worker: what it says goes to the program, which owns the terminal.
class RelayedConsole : public Console {
  public:
    /// What `shown` makes of a text that names files is told.
    RelayedConsole(bool isJson, platform::Channel& channel,
                   std::function<std::string(const std::string&)> shown)
        : Console(isJson), channel_(channel), shown_(std::move(shown)) {}

    void write(const std::string& text) override;
    void downloadProgress(uint64_t received, uint64_t total, double seconds) override;
    void jobPlanned(int64_t frames, int64_t pixels) override;
    void jobProgress(const JobProgress& progress) override;
    void finding(const Finding& finding) override { Console::finding(shown(finding)); }
    void jobFinding(const Finding& finding) override { Console::jobFinding(shown(finding)); }

  private:
    Finding shown(Finding finding) const;

    platform::Channel& channel_;
    std::function<std::string(const std::string&)> shown_;
    std::mutex writing_;
};

/// What a RelayedConsole has sent, said by the program's own.
void sayRelayed(Console& console, const platform::Message& message);

}  // namespace multiscene::cli
