// A run of the program that holds one video ready and draws stills of it (app/preview/StillTalk.h).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/base/DispatchQueue.h"
#include "platform/base/LineSocket.h"
#include "studio/Parts.h"
#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// Studio queue: made and destroyed on it, and it calls back there.
class HeldProgram {
  public:
    /// A line, and the bytes that follow it.
    using Said = std::function<void(const platform::Value& line, const std::string& bytes)>;
    /// Once; may destroy the object.
    using Ended = std::function<void(const ChildProgram::End& end)>;

    /// Nobody hears it yet.
    explicit HeldProgram(const Parts& parts);
    /// Ends the program; nothing is called any more.
    ~HeldProgram();
    HeldProgram(const HeldProgram&) = delete;
    HeldProgram& operator=(const HeldProgram&) = delete;

    /// From now on. Once it has ended before, nothing is called, and hasEnded() says so.
    void listen(Said said, Ended ended);
    bool hasEnded() const;
    /// Never waits.
    void ask(const platform::Value& line);
    /// Ends the program without waiting. Nothing is called any more but `gone`, once it has ended.
    void leave(std::function<void()> gone);

  private:
    struct Shared;
    using Ends = std::pair<platform::FileHandle, platform::FileHandle>;

    HeldProgram(const Parts& parts, Ends ends);
    void read();

    platform::DispatchQueue& queue_;
    const std::shared_ptr<Shared> shared_;
    platform::LineSocket socket_;
    std::unique_ptr<ChildProgram> child_;
    platform::DispatchQueue writing_{"preview lines"};
    std::thread reader_;
};

}  // namespace multiscene::studio
