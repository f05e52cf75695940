#include "studio/process/ChildProblem.h"

namespace multiscene::studio {

using platform::Error;
using platform::ErrorKind;

namespace {

ErrorKind kindOfExit(int code) {
    for (const ErrorKind kind : {ErrorKind::Usage, ErrorKind::Template, ErrorKind::Input,
                                 ErrorKind::Transient, ErrorKind::Cancelled})
        if (code == static_cast<int>(kind)) return kind;
    return ErrorKind::Failed;
}

}  // namespace

const char* causeOf(const ChildProgram::End& end) {
    if (end.signal != 0) return end.fault.empty() ? "signal" : "ended";
    if (end.exitCode < 0) return "not-started";
    if (end.exitCode == 0) return "done";
    switch (kindOfExit(end.exitCode)) {
        case ErrorKind::Usage:
            return "usage";
        case ErrorKind::Template:
            return "template";
        case ErrorKind::Input:
            return "input";
        case ErrorKind::Transient:
            return "passing";
        case ErrorKind::Cancelled:
            return "cancelled";
        default:
            return "failed";
    }
}

Error errorOf(const ChildProgram::End& end) {
    const ErrorKind kind = kindOfExit(end.exitCode);
    if (!end.fault.empty()) return Error(kind, "the work " + end.fault);
    if (end.error) return Error(kind, end.error.string("message"), "", end.error.string("key"));
    if (end.signal != 0) return Error(kind, "the work was ended by signal " + std::to_string(end.signal));
    return Error(kind, "the work ended without a result (exit code " + std::to_string(end.exitCode) + ")");
}

Problem problemOf(const ChildProgram::End& end) { return Problem(errorOf(end)); }

}  // namespace multiscene::studio
