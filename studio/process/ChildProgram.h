// One run of the program itself, for everything that the studio does not do in its own process: reading
// foreign files, decoding, drawing.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/DispatchQueue.h"
#include "platform/base/File.h"
#include "platform/base/Value.h"
#include "studio/StudioSettings.h"

namespace multiscene::studio {

/// A thread of its own starts the program, reads its JSON lines and waits for its end: it has to be one that
/// lives as long as the program, which the kernel asks to end (SIGTERM) when that thread does, however the
/// studio ends. The program has a session of its own, an empty standard input and of the studio's environment
/// only what concerns it.
///
/// Made and destroyed on the queue that it calls back on.
class ChildProgram {
  public:
    struct Spec {
        std::filesystem::path program;
        std::vector<std::string> arguments;
        std::map<std::string, std::string> environment = {};
        std::filesystem::path folder = {};  ///< where it works; empty: where the studio does
        int niceness = 0;
        platform::FileHandle connection = {};      ///< the program's descriptor 3
        std::chrono::seconds most{0};              ///< one that takes longer is ended; 0: never
        std::chrono::milliseconds patience{2000};  ///< from being asked to end until it is killed
    };
    struct End {
        int exitCode = -1;  ///< -1: it ended by a signal, or never ran
        int signal = 0;
        platform::Value error;  ///< the last line with "event": "error"; none
        std::string fault;      ///< why the studio ended it, or could not start it; empty: it did not
    };
    using Line = std::function<void(const platform::Value&)>;
    using Ended = std::function<void(const End&)>;

    /// Lines that hold no object are passed over. `ended` is called once, after all lines, also when nothing
    /// could be started, and may destroy the object; a call may make others.
    ChildProgram(platform::DispatchQueue& queue, Spec spec, Line line, Ended ended);
    /// Ends it as cancel() does, and waits for that. Nothing is called any more.
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    /// SIGTERM, and SIGKILL when it loses patience.
    void cancel();

  private:
    class Run;
    std::shared_ptr<Run> run_;
};

/// The program with the options that every run of it is given, and these words.
ChildProgram::Spec programRun(const StudioSettings& settings, std::vector<std::string> words);

}  // namespace multiscene::studio
