#include "app/check/Finding.h"

namespace multiscene {

const char* word(Severity severity) { return severity == Severity::Error ? "error" : "warning"; }

std::string describe(const Finding& finding) {
    std::string line = finding.file + ": ";
    if (!finding.keyPath.empty()) line += finding.keyPath + ": ";
    line += std::string(word(finding.severity)) + ": " + finding.message;
    if (!finding.remedy.empty()) line += "; " + finding.remedy;
    return line;
}

}  // namespace multiscene
