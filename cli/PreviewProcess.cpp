#include "cli/PreviewProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "cli/Table.h"
#include "platform/base/Clock.h"
#include "platform/base/CurrentError.h"
#include "platform/base/Memory.h"

namespace multiscene::cli {

using platform::Channel;
using platform::Error;
using platform::ErrorKind;
using platform::FileHandle;
using platform::Message;

namespace {

constexpr double kFarewell = 2;  // seconds
constexpr int kTurn = 50;        // milliseconds

/// In the window's process. What sound and screen libraries write there is of no use to anybody.
void silenceLibraries() {
    const FileHandle nothing(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    if (!nothing) return;
    ::dup2(nothing.descriptor(), STDOUT_FILENO);
    ::dup2(nothing.descriptor(), STDERR_FILENO);
}

int showWindow(Channel& program, const PreviewSettings& settings) {
    platform::leaveLastWordsToOthers();
    silenceLibraries();
    try {
        auto first = program.receive(true);
        if (!first || first->files.empty()) return EXIT_FAILURE;
        const FileHandle errors = std::move(first->files.front());
        PreviewWindow window(program, settings, [&errors](const std::string& text) {
            const std::string line = "multiscene: note: " + printable(text) + "\n";
            static_cast<void>(!::write(errors.descriptor(), line.data(), line.size()));
        });
        window.run();
        return EXIT_SUCCESS;
    } catch (...) {
        program.send(Message::of(Message::Kind::Failure, platform::currentError()));
        return EXIT_FAILURE;
    }
}

}  // namespace

PreviewProcess::PreviewProcess(const PreviewSettings& settings)
    : process_([&settings](Channel& program) { return showWindow(program, settings); }) {
    Message first = Message::make(Message::Kind::Request, {});
    first.files.emplace_back(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0));
    process_.channel().send(first);
}

void PreviewProcess::connect(FileHandle connection) {
    Message message = Message::make(Message::Kind::Request, {"worker"});
    message.files.push_back(std::move(connection));
    process_.channel().send(message);
}

void PreviewProcess::say(const Error& error) {
    process_.channel().send(Message::make(Message::Kind::Request, {"lost", error.what()}));
}

std::optional<PreviewProcess::Wish> PreviewProcess::heard() {
    while (const auto message = process_.channel().receive()) {
        if (message->kind == Message::Kind::Failure) throw message->error();
        if (message->field(0) == "again") return Wish::AnotherWorker;
        if (message->field(0) == "closed") return Wish::Nothing;
    }
    if (process_.channel().isClosed())
        throw Error(ErrorKind::Failed, "the window is gone: its screen was lost");
    return std::nullopt;
}

PreviewProcess::Wish PreviewProcess::wish(const std::function<bool()>& isCancelled) {
    while (true) {
        if (const auto wish = heard()) return *wish;
        if (isCancelled()) throw Error(ErrorKind::Cancelled, "cancelled");
        pollfd waiting{process_.channel().descriptor(), POLLIN, 0};
        ::poll(&waiting, 1, kTurn);
    }
}

void PreviewProcess::close() {
    ::shutdown(process_.channel().descriptor(), SHUT_RDWR);
    for (const double start = platform::monotonicSeconds();
         !process_.ended() && platform::monotonicSeconds() - start < kFarewell;)
        ::poll(nullptr, 0, kTurn / 5);
}

}  // namespace multiscene::cli
