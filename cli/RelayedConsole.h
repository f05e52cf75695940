#pragma once

#include "cli/Console.h"
#include "platform/fence/Channel.h"

namespace multiscene::cli {

/// The console of a worker: what it says goes to the program, which owns the terminal.
class RelayedConsole : public Console {
  public:
    RelayedConsole(bool isJson, platform::Channel& channel) : Console(isJson), channel_(channel) {}

    void write(const std::string& text) override;
    void downloadProgress(uint64_t received, uint64_t total, double seconds) override;
    void jobPlanned(int64_t frames, int64_t pixels) override;
    void jobProgress(const JobProgress& progress) override;

  private:
    platform::Channel& channel_;
    std::mutex writing_;
};

/// What a RelayedConsole has sent, said by the program's own.
void sayRelayed(Console& console, const platform::Message& message);

}  // namespace multiscene::cli
