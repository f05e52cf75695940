#pragma once

#include <string>
#include <vector>

namespace multiscene {

/// An error keeps the template from playing as written, a warning is something its author hardly meant.
enum class Severity { Error, Warning };

/// One thing that is wrong, where, and what to do about it.
struct Finding {
    Severity severity = Severity::Error;
    std::string file;     ///< the property list that holds the fault
    std::string keyPath;  ///< "object3D[2].FpsInfo.endFps"; empty when it is about the whole file
    std::string message;
    std::string remedy;

    bool operator==(const Finding&) const = default;
};

using Findings = std::vector<Finding>;

/// "file: key: error: message; remedy" on one line.
std::string describe(const Finding& finding);

/// "error" or "warning".
const char* word(Severity severity);

}  // namespace multiscene
