#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// A child from its start to its end, in one thread.
class ChildRun {
  public:
    using Lines = std::function<void(std::vector<platform::Value>)>;

    /// `lines` is called in the thread of run(). Throws Error when there are no descriptors left.
    ChildRun(ChildProgram::Spec spec, Lines lines);

    /// Until the child has ended. Once.
    ChildProgram::End run();
    /// Any thread.
    void cancel();

  private:
    using Time = std::chrono::steady_clock::time_point;

    void start();
    void watch();
    int patience() const;
    void hearCancel();
    void endWith(const std::string& fault);
    void escalate();
    bool readSome();
    void take();
    void takeLine(std::string_view line);
    bool hasEnded();

    ChildProgram::Spec spec_;
    Lines lines_;
    platform::FileHandle wake_, output_, end_;
    pid_t process_ = -1;
    std::optional<int> status_;
    std::optional<Time> killAt_, lateAt_;
    std::string unread_;
    uint64_t readBytes_ = 0;
    std::vector<platform::Value> values_;
    ChildProgram::End result_;
};

}  // namespace multiscene::studio
