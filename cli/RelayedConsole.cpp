#include "cli/RelayedConsole.h"

namespace multiscene::cli {

using platform::Message;

namespace {

/// As much as a pipe takes at once.
constexpr size_t kPiece = 4000;

}  // namespace

void RelayedConsole::write(const std::string& text) {
    // The pieces of a long line stay together.
    const std::lock_guard lock(writing_);
    for (size_t at = 0; at < text.size(); at += kPiece)
        channel_.send(Message::make(Message::Kind::Output, {text.substr(at, kPiece)}));
}

void RelayedConsole::jobProgress(const JobProgress& progress) {
    channel_.send(
        Message::make(Message::Kind::Progress,
                      {std::to_string(progress.frame), std::to_string(progress.totalFrames),
                       platform::fieldOf(progress.framesPerSecond),
                       platform::fieldOf(progress.secondsRemaining), isReserved() ? "silent" : ""}));
}

void sayRelayed(Console& console, const Message& message) {
    if (message.kind == Message::Kind::Output) {
        console.clearBar();
        console.write(message.field(0));
    } else if (message.kind == Message::Kind::Progress && message.field(4).empty()) {
        console.jobProgress({.frame = message.integer(0),
                             .totalFrames = message.integer(1),
                             .framesPerSecond = message.number(2),
                             .secondsRemaining = message.number(3)});
    }
}

}  // namespace multiscene::cli
