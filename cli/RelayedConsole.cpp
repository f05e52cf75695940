#include "cli/RelayedConsole.h"

namespace multiscene::cli {

using platform::Message;

namespace {

/// As much as a pipe takes at once.
constexpr size_t kPiece = 4000;

}  // namespace

Finding RelayedConsole::shown(Finding finding) const {
    for (std::string* text : {&finding.file, &finding.message, &finding.remedy}) *text = shown_(*text);
    return finding;
}

void RelayedConsole::write(const std::string& text) {
    // The pieces of a long line stay together.
    const std::lock_guard lock(writing_);
    for (size_t at = 0; at < text.size(); at += kPiece)
        channel_.send(Message::make(Message::Kind::Output, {text.substr(at, kPiece)}));
}

void RelayedConsole::downloadProgress(uint64_t received, uint64_t total, double seconds) {
    channel_.send(Message::make(Message::Kind::Download, {std::to_string(received), std::to_string(total),
                                                          platform::fieldOf(seconds)}));
}

void RelayedConsole::jobPlanned(int64_t frames, int64_t pixels) {
    channel_.send(Message::make(Message::Kind::Plan,
                                {std::to_string(frames > 0 ? frames : -1), std::to_string(pixels)}));
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
    } else if (message.kind == Message::Kind::Download) {
        const auto bytes = [&](size_t field) { return static_cast<uint64_t>(message.integer(field)); };
        console.downloadProgress(bytes(0), bytes(1), message.number(2));
    } else if (message.kind == Message::Kind::Progress && message.field(4).empty()) {
        console.jobProgress({.frame = message.integer(0),
                             .totalFrames = message.integer(1),
                             .framesPerSecond = message.number(2),
                             .secondsRemaining = message.number(3)});
    }
}

}  // namespace multiscene::cli
