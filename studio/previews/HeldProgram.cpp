#include "studio/previews/HeldProgram.h"

#include <sys/socket.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "app/preview/StillTalk.h"
#include "platform/base/Json.h"

namespace multiscene::studio {

using platform::Error;
using platform::FileHandle;
using platform::Value;

namespace {

constexpr int64_t kMostBytes = int64_t{32} << 20;  // of a picture

std::pair<FileHandle, FileHandle> connectedPair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw platform::errnoError(errno, "cannot connect to a program", "");
    return {FileHandle(ends[0]), FileHandle(ends[1])};
}

}  // namespace

/// What calls that are on their way find when the object is gone. Studio queue, but for what is said to be of
/// any thread.
struct HeldProgram::Shared {
    Said said = [](const Value&, const std::string&) {};
    Ended ended = [](const ChildProgram::End&) {};
    bool isAlive = true, hasEnded = false;

    /// The reader: hands on a call and waits until it was taken, so that a program that never stops talking
    /// is not heard faster than it is listened to.
    void deliver(platform::DispatchQueue& queue, std::function<void()> call) {
        std::unique_lock lock(mutex_);
        if (isClosed_) return;
        isWaiting_ = true;
        queue.async(std::move(call));
        taken_.wait(lock, [this] { return !isWaiting_; });
    }
    /// Any thread: it was; `isLast`: nothing is waited for any more.
    void taken(bool isLast) {
        {
            const std::lock_guard lock(mutex_);
            isWaiting_ = false;
            isClosed_ |= isLast;
        }
        taken_.notify_one();
    }

  private:
    std::mutex mutex_;
    std::condition_variable taken_;
    bool isWaiting_ = false, isClosed_ = false;
};

HeldProgram::HeldProgram(const Parts& parts) : HeldProgram(parts, connectedPair()) {}

HeldProgram::HeldProgram(const Parts& parts, Ends ends)
    : queue_(parts.queue), shared_(std::make_shared<Shared>()), socket_(std::move(ends.first)) {
    ChildProgram::Spec spec = programRun(parts.settings, {"hold"});
    spec.connection = std::move(ends.second);
    child_ = std::make_unique<ChildProgram>(
        parts.queue, std::move(spec), [](const Value&) {},
        [shared = shared_](const ChildProgram::End& end) {
            shared->hasEnded = true;
            const Ended call = shared->ended;  // which may replace or destroy what it came from
            if (shared->isAlive) call(end);
        });
    reader_ = std::thread([this] { read(); });
}

HeldProgram::~HeldProgram() {
    shared_->isAlive = false;
    shared_->taken(true);
    ::shutdown(socket_.descriptor(), SHUT_RDWR);  // its work ends with that
    reader_.join();
    child_->cancel();
}

void HeldProgram::leave(std::function<void()> gone) {
    shared_->said = [](const Value&, const std::string&) {};
    shared_->ended = [gone = std::move(gone)](const ChildProgram::End&) { gone(); };
    ::shutdown(socket_.descriptor(), SHUT_RDWR);
    child_->cancel();
}

void HeldProgram::listen(Said said, Ended ended) {
    shared_->said = std::move(said);
    shared_->ended = std::move(ended);
}

bool HeldProgram::hasEnded() const { return shared_->hasEnded; }

void HeldProgram::ask(const Value& line) {
    writing_.async([this, text = platform::jsonText(line) + "\n"] {
        try {
            socket_.write(text);
        } catch (const Error&) {
            // It has ended, and will say so.
        }
    });
}

/// What it says may be anything: it has read foreign files. One that says what cannot be understood is of no
/// more use.
void HeldProgram::read() {
    try {
        while (const auto text = socket_.readLine(stillTalk::kLongestLine)) {
            Value line = platform::parseJson(*text, "what a program says");
            const int64_t count = line.integer("bytes");
            if (count < 0 || count > kMostBytes) return child_->cancel();
            auto bytes = socket_.readBytes(static_cast<size_t>(count));
            if (!bytes) return;
            shared_->deliver(queue_, [shared = shared_, line = std::move(line), bytes = std::move(*bytes)] {
                if (shared->isAlive) shared->said(line, bytes);
                shared->taken(false);
            });
        }
    } catch (const Error&) {
        child_->cancel();
    }
}

}  // namespace multiscene::studio
