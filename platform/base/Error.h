// The one error scheme of the program: everything a user must see is a platform::Error.
// The render path throws none; it skips and counts (see report/RenderReport.h).
#pragma once

#include <stdexcept>
#include <string>

namespace platform {

/// Whose fault an error is. The numbers are the program's exit codes.
enum class ErrorKind {
    Failed = 1,       ///< the job failed
    Usage = 2,        ///< the command was called wrongly
    Template = 3,     ///< the template, scene or scene-group file is at fault
    Input = 4,        ///< the user's text, photo, video or music is at fault
    Transient = 75,   ///< worth another try: disk full, out of memory, network
    Cancelled = 130,  ///< the user asked to stop
};

/// An error with its place. what() is one line, "file: key: message", with the empty parts left out.
class Error : public std::runtime_error {
  public:
    Error(ErrorKind kind, const std::string& message, const std::string& file = {},
          const std::string& key = {});

    ErrorKind kind() const { return kind_; }
    int exitCode() const { return static_cast<int>(kind_); }
    const std::string& message() const { return message_; }
    const std::string& file() const { return file_; }
    const std::string& key() const { return key_; }

    /// The same error blamed on somebody else, as when a template's file turns out to be the user's.
    Error withKind(ErrorKind kind) const { return Error(kind, message_, file_, key_); }

  private:
    ErrorKind kind_;
    std::string message_, file_, key_;
};

/// Whether the reason of a failed call may be another tomorrow: a full disk or one that fails, a quota, too
/// many open files, lack of memory, an interruption.
bool isPassing(int errnoValue);

/// The error behind an errno value; Transient whatever `kind` says for one that is passing.
Error errnoError(int errnoValue, const std::string& action, const std::string& file,
                 ErrorKind kind = ErrorKind::Failed);

}  // namespace platform
