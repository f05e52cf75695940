// What supervisor and worker say to each other.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/Error.h"
#include "platform/base/File.h"

namespace platform {

/// One message: a kind, a few short texts, and open files. Nothing that the worker says is believed: whoever
/// hears it takes missing or strange fields for empty ones.
struct Message {
    enum class Kind : uint32_t {
        Fence = 1,  ///< level, what is missing: how much of the sandbox holds
        Sign,       ///< stage, file, blame: what is being done now; a sign of life
        Progress,   ///< numbers of the job's progress
        Output,     ///< text for standard output
        Request,    ///< name, arguments: the worker waits for the answer
        Answer,     ///< to a request: empty, or what failed (as in Failure)
        Failure,    ///< kind, message, file, key: what ended the job
        Done,       ///< exit code
        Download,   ///< bytes received, bytes in all, seconds: a sign of life, too
        Plan,       ///< frames (0: unknown), pixels of one: what the job's limits follow from
    };

    /// More than this is not sent, and not heard.
    static constexpr size_t maxBytes = 32 * 1024, maxFields = 16, maxFiles = 4;

    Kind kind = Kind::Done;
    std::vector<std::string> fields;
    std::vector<FileHandle> files;

    /// Empty when there is no such field.
    const std::string& field(size_t index) const;
    /// 0 when there is no such field or it is no number.
    int64_t integer(size_t index) const;
    double number(size_t index) const;

    static Message make(Kind kind, std::vector<std::string> fields) { return {kind, std::move(fields), {}}; }
    /// An error, told as a Failure or an Answer.
    static Message of(Kind kind, const Error& error);
    /// The error that a Failure or an Answer tells; an unknown kind is Failed.
    Error error() const;
};

/// A number as a field; doubles keep all their bits.
std::string fieldOf(double number);

}  // namespace platform
